#include "cli/conversion_plan.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

using test::TemporaryFolder;
namespace fs = std::filesystem;

struct Row {
    const char* name;
    std::vector<std::string> designs;
    std::vector<std::string> targets;  // below the folder they go to, in the order of the designs
    const char* outFolder = "out";     // seen from the folder that is read
};
class Plans : public testing::TestWithParam<Row> {};

TEST_P(Plans, GiveEachDesignATargetOfItsOwn) {
    const TemporaryFolder folder;
    const fs::path in = folder.path() / "in";
    std::vector<fs::path> designs;
    for (const std::string& name : GetParam().designs) designs.push_back(folder.write(in / name, "design"));
    const fs::path out = in / GetParam().outFolder;
    std::vector<std::string> targets;
    for (const Conversion& conversion : planConversions(designs, in, out, "pes")) {
        EXPECT_EQ(conversion.source, designs[targets.size()]);
        targets.push_back(conversion.target.lexically_relative(out));
    }
    EXPECT_EQ(targets, GetParam().targets);
}

// The letters: an e with an acute accent in one character and in two, a sharp s, the sign for kelvin.
INSTANTIATE_TEST_SUITE_P(
    Rows, Plans,
    testing::Values(
        Row{"Plain", {"a.dst", "b/a.dst"}, {"a.pes", "b/a.pes"}},
        Row{"OneStem", {"a.dst", "a.exp"}, {"a.dst.pes", "a.exp.pes"}},
        Row{"OneStemAndItsName", {"a.dst", "a.dst.exp", "a.exp"}, {"a.dst.pes", "a.dst.exp.pes", "a.exp.pes"}},
        Row{"Case", {"Rose.dst", "rose.dst"}, {"Rose.dst.pes", "rose.dst-2.pes"}},
        Row{"CaseOfExtensions",
            {"rose.DST", "rose.dst", "rose.exp"},
            {"rose.DST.pes", "rose.dst-2.pes", "rose.exp.pes"}},
        Row{"CaseOfFolders", {"A/rose.dst", "a/rose.dst"}, {"A/rose.dst.pes", "a/rose.dst-2.pes"}},
        Row{"Composition", {"ros\xC3\xA9.dst", "rose\xCC\x81.dst"}, {"ros\xC3\xA9.dst.pes", "rose\xCC\x81.dst-2.pes"}},
        Row{"CompositionAndCase",
            {"ROS\xC3\x89.dst", "rose\xCC\x81.exp"},
            {"ROS\xC3\x89.dst.pes", "rose\xCC\x81.exp.pes"}},
        Row{"SharpS",
            {"strasse.dst",
             "stra\xC3\x9F"
             "e.dst"},
            {"strasse.dst.pes",
             "stra\xC3\x9F"
             "e.dst-2.pes"}},
        Row{"Kelvin", {"k.dst", "\xE2\x84\xAA.dst"}, {"k.dst.pes", "\xE2\x84\xAA.dst-2.pes"}},
        Row{"NoText", {"\xFF.dst", "\xFE.dst"}, {"\xFF.dst.pes", "\xFE.dst-2.pes"}},
        Row{"InPlace", {"a.dst", "b.pes"}, {"a.pes", "b.pes.pes"}, "."},
        Row{"InPlaceOfAnother", {"a.dst", "A.PES"}, {"a.dst.pes", "A.PES.pes"}, "."},
        // b.dst.pes would have the side file b.dst.threads, which is that of b.dst.exp.
        Row{"SideFileOfAnother", {"b.dst", "b.exp", "b.dst.exp"}, {"b.dst-2.pes", "b.exp.pes", "b.dst.pes"}, "."},
        Row{"OutsideTheFolder", {"a.dst"}, {"a.pes"}, "../elsewhere"}),
    [](const auto& row) { return row.param.name; });

TEST(Plans, FollowLinksBetweenTargets) {
    const TemporaryFolder folder;
    const std::vector<fs::path> designs{folder.write("in/a.dst", "1"), folder.write("in/b.dst", "2"),
                                        folder.write("in/c.dst", "3")};
    fs::create_directory(folder.path() / "out");
    fs::create_symlink("none.pes", folder.path() / "out" / "a.pes");
    fs::create_symlink(folder.path() / "out" / "none.pes", folder.path() / "out" / "b.pes");
    fs::create_symlink("c.pes", folder.path() / "out" / "c.pes");
    const auto plan = planConversions(designs, folder.path() / "in", folder.path() / "out", "pes");
    EXPECT_EQ(plan[0].target.filename(), "a.dst.pes");
    EXPECT_EQ(plan[1].target.filename(), "b.dst.pes");
    EXPECT_EQ(plan[2].target.filename(), "c.pes") << "a circle leads nowhere";
}

struct OutRow {
    const char* name;
    const char* folder;
    const char* outFolder;
    const char* listed;
    bool isHeld;
};
class OutputFolders : public testing::TestWithParam<OutRow> {};
TEST_P(OutputFolders, HoldWhatLiesBelowThemInTheFolder) {
    const TemporaryFolder folder;
    fs::create_directories(folder.path() / "a/b/c");
    fs::create_directory_symlink(folder.path() / "a/b", folder.path() / "a/link");
    const auto& [name, top, outFolder, listed, isHeld] = GetParam();
    const OutputFolder output(folder.path() / outFolder, folder.path() / top);
    EXPECT_EQ(output.holds(folder.path() / listed), isHeld);
}
INSTANTIATE_TEST_SUITE_P(Rows, OutputFolders,
                         testing::Values(OutRow{"Itself", "a", "a/b", "a/b", true},
                                         OutRow{"Below", "a", "a/b/", "a/b/c", true},
                                         OutRow{"Above", "a", "a/b", "a", false},
                                         OutRow{"ThroughALink", "a", "a/b", "a/link", true},
                                         OutRow{"GivenAsALink", "a", "a/link", "a/b/c", true},
                                         OutRow{"NotThereYet", "a", "a/new/", "a/b", false},
                                         OutRow{"LikeAnother", "a", "a/bc", "a/b", false},
                                         OutRow{"TheFolderItself", "a/b", "a/b", "a/b/c", false},
                                         OutRow{"AroundTheFolder", "a/b", "a", "a/b/c", false},
                                         OutRow{"Elsewhere", "a", "elsewhere", "a/b", false}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace velamo
