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

std::string loadedBy(const std::filesystem::path& file) {
    const test::TemporaryFolder folder;
    const auto out = folder.path() / "out";
    if (std::system(("ldd '" + file.native() + "' >" + out.native()).c_str()) != 0) return {};
    return test::TemporaryFolder::read(out);
}

/// The importer lives in another's process, and holds all of velamo that it needs: nothing that draws, or opens
/// archives.
TEST(InstalledImporter, LoadsNothingThatDraws) {
    const std::string loaded = loadedBy(VELAMO_IMPORTER);
    EXPECT_NE(loaded.find("libicuuc"), std::string::npos);
    for (const char* library :
         {"libvelamo.so", "libarchive", "cairo", "pixman", "libpng", "freetype", "fontconfig", "libX11"})
        EXPECT_EQ(loaded.find(library), std::string::npos) << library;
}

/// What two files of a process held twice, it would have twice: palettes, tables, locks.
class InstalledProgram : public testing::TestWithParam<const char*> {};
TEST_P(InstalledProgram, TakesTheLibraryFromItsFile) {
    EXPECT_NE(loadedBy(GetParam()).find("libvelamo.so.0.1 => "), std::string::npos);
    const std::string content = test::TemporaryFolder::read(GetParam());
    EXPECT_EQ(content.find("File holds no stitches."), std::string::npos);
}
INSTANTIATE_TEST_SUITE_P(Programs, InstalledProgram, testing::Values(VELAMO_INSTALLED_PROGRAMS),
                         [](const auto& row) { return "File" + std::to_string(row.index); });

/// Short paths are not to be found in a file's bytes, so it is asked as well.
TEST(LibraryElsewhere, LooksForResourcesBesideItselfAlone) {
    const test::TemporaryFolder folder;
    std::filesystem::copy_file(VELAMO_LIBRARY, folder.path() / "libvelamo.so.0.1");
    const std::string command = "LD_LIBRARY_PATH=" + folder.path().native() + ' ' + VELAMO_PROGRAM +
                                " palettes --json >" + (folder.path() / "out").native();
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(test::TemporaryFolder::read(folder.path() / "out"), "[]\n");
    std::filesystem::create_directory_symlink(std::filesystem::path(VELAMO_SOURCE_FOLDER) / "resources",
                                              folder.path() / "resources");
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_NE(test::TemporaryFolder::read(folder.path() / "out").find("Brother"), std::string::npos);
}

TEST(BuildTree, HasTheResourcesOfTheSourcesWhereTheLibraryLooks) {
    const std::filesystem::path library = VELAMO_LIBRARY;
    EXPECT_TRUE(std::filesystem::equivalent(library.parent_path() / "../share/velamo/resources",
                                            std::filesystem::path(VELAMO_SOURCE_FOLDER) / "resources"));
}

}  // namespace
}  // namespace velamo
