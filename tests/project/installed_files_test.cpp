// What is installed finds its resources beside itself and names no folder of the machine that built it: whoever could
// write there would decide what every user's programs read.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

class InstalledFile : public testing::TestWithParam<const char*> {};
TEST_P(InstalledFile, NamesNoFolderOfItsSources) {
    const auto content = test::TemporaryFolder::read(GetParam());
    ASSERT_FALSE(content.empty());
    for (const char* folder : {VELAMO_UNNAMED_FOLDERS})
        EXPECT_EQ(content.find(std::string(VELAMO_SOURCE_FOLDER) + folder), std::string::npos) << folder;
}
INSTANTIATE_TEST_SUITE_P(Files, InstalledFile, testing::Values(VELAMO_INSTALLED_FILES),
                         [](const auto& row) { return "File" + std::to_string(row.index); });

/// Whoever only reads designs needs nothing that draws: an indexer starts its importer for each batch of files.
TEST(InstalledReaders, LoadNothingThatDraws) {
    const test::TemporaryFolder folder;
    for (const char* reader : {VELAMO_READERS}) {
        const auto out = folder.path() / "out";
        ASSERT_EQ(std::system(("ldd '" + std::string(reader) + "' >" + out.native()).c_str()), 0) << reader;
        const std::string loaded = test::TemporaryFolder::read(out);
        EXPECT_NE(loaded.find("libicuuc"), std::string::npos) << reader;
        for (const char* library : {"cairo", "pixman", "libpng", "freetype", "fontconfig", "libX11"})
            EXPECT_EQ(loaded.find(library), std::string::npos) << reader << " loads " << library;
    }
}

/// Short paths are not to be found in a program's bytes, so it is asked as well.
TEST(ProgramElsewhere, LooksForResourcesBesideItselfAlone) {
    const test::TemporaryFolder folder;
    const auto program = folder.path() / "velamo";
    std::filesystem::copy_file(VELAMO_PROGRAM, program);
    const std::string command = program.native() + " palettes --json >" + (folder.path() / "out").native();
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(test::TemporaryFolder::read(folder.path() / "out"), "[]\n");
    std::filesystem::create_directory_symlink(std::filesystem::path(VELAMO_SOURCE_FOLDER) / "resources",
                                              folder.path() / "resources");
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_NE(test::TemporaryFolder::read(folder.path() / "out").find("Brother"), std::string::npos);
}

TEST(BuildTree, HasTheResourcesOfTheSourcesWhereProgramsLook) {
    const std::filesystem::path program = VELAMO_PROGRAM;
    EXPECT_TRUE(std::filesystem::equivalent(program.parent_path() / "../share/velamo/resources",
                                            std::filesystem::path(VELAMO_SOURCE_FOLDER) / "resources"));
}

}  // namespace
}  // namespace velamo
