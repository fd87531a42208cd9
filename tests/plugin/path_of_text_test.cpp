#include "plugin/path_of_text.h"

#include <gtest/gtest.h>

#include "tests/support/corefoundation.h"
#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

namespace fs = std::filesystem;
using test::text;

const std::string decomposed = "e\xCC\x81.dst";
const std::string composed = "\xC3\xA9.dst";

struct Row {
    const char* name;
    std::vector<std::string> files;  // that are there
    std::string first;
    std::string second;
    std::string taken;
};
void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

class PathThatIsThere : public testing::TestWithParam<Row> {};
TEST_P(PathThatIsThere, IsTheFirstUnlessOnlyTheSecondMayBe) {
    const test::TemporaryFolder folder;
    for (const std::string& name : GetParam().files) folder.write(name, "");
    const auto inFolder = [&](const std::string& name) { return name.empty() ? fs::path() : folder.path() / name; };
    EXPECT_EQ(pathThatIsThere(inFolder(GetParam().first), inFolder(GetParam().second)), inFolder(GetParam().taken));
}
INSTANTIATE_TEST_SUITE_P(Rows, PathThatIsThere,
                         testing::Values(Row{"Decomposed", {decomposed}, decomposed, composed, decomposed},
                                         Row{"Composed", {composed}, decomposed, composed, composed},
                                         Row{"Both", {decomposed, composed}, decomposed, composed, decomposed},
                                         Row{"Neither", {}, decomposed, composed, composed},
                                         Row{"NoSecond", {}, decomposed, "", decomposed},
                                         Row{"NoFirst", {composed}, "", composed, composed},
                                         Row{"TheSame", {}, composed, composed, composed}),
                         [](const auto& row) { return std::string(row.param.name); });

/// What is there and may not be looked at is no reason for another name.
TEST(PathThatIsThere, IsTheFirstWhereTheSystemDoesNotSay) {
    const test::TemporaryFolder folder;
    const auto circle = folder.path() / "circle";
    fs::create_symlink("circle", circle);
    EXPECT_EQ(pathThatIsThere(circle, folder.write("other", "")), circle);
}

TEST(PathOfText, HasTheLettersOfTheFile) {
    const test::TemporaryFolder folder;
    for (const std::string& name : {std::string("rose.dst"), composed, decomposed}) {
        const auto file = folder.write(name, "found by " + name);
        const auto path = pathOfText(text(file.c_str()).get());
        EXPECT_EQ(test::TemporaryFolder::read(path), "found by " + name) << path;
    }
    EXPECT_EQ(pathOfText(text("").get()), fs::path());
}

}  // namespace
}  // namespace velamo
