#include "cli/conversion_plan.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

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
    std::vector<std::string> bystanders = {};
};
class Plans : public testing::TestWithParam<Row> {};

TEST_P(Plans, GiveEachDesignATargetOfItsOwn) {
    const TemporaryFolder folder;
    const fs::path in = folder.path() / "in";
    std::vector<fs::path> designs;
    for (const std::string& name : GetParam().designs) designs.push_back(folder.write(in / name, "design"));
    DesignsOfFolder all{.sources = designs, .bystanders = {}};
    for (const std::string& name : GetParam().bystanders) all.bystanders.push_back(folder.write(in / name, "design"));
    const fs::path out = in / GetParam().outFolder;
    std::vector<std::string> targets;
    for (const Conversion& conversion : planConversions(all, in, out, "pes")) {
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
        Row{"InPlaceBesideADesign", {"a.dst"}, {"a.dst.pes"}, ".", {"a.pes"}},
        Row{"InPlaceAgain", {"a.dst"}, {"a.dst.pes"}, ".", {"a.pes", "a.dst.pes"}},
        Row{"InPlaceAgainWithANumber",
            {"A.dst", "a.dst"},
            {"A.dst.pes", "a.dst-2.pes"},
            ".",
            {"A.dst.pes", "a.dst-2.pes"}},
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
    const auto plan = planConversions({designs, {}}, folder.path() / "in", folder.path() / "out", "pes");
    EXPECT_EQ(plan[0].target.filename(), "a.dst.pes");
    EXPECT_EQ(plan[1].target.filename(), "b.dst.pes");
    EXPECT_EQ(plan[2].target.filename(), "c.pes") << "a circle leads nowhere";
}

TEST(Plans, LeadToNoSourceByAnotherOfItsNames) {
    const TemporaryFolder folder;
    const std::vector<fs::path> designs{folder.write("in/a.dst", "1"), folder.write("in/b.exp", "2")};
    fs::create_directory(folder.path() / "out");
    fs::create_hard_link(designs[1], folder.path() / "out" / "a.pes");
    const auto plan = planConversions({designs, {}}, folder.path() / "in", folder.path() / "out", "pes");
    EXPECT_EQ(plan[0].target.filename(), "a.dst.pes");
    EXPECT_EQ(plan[1].target.filename(), "b.pes");
}

/// Shows a folder at another place as well, in a process of its own to which alone it is shown there.
template <class Body>
void withFolderMounted(const fs::path& folder, const fs::path& place, const Body& body) {
    const pid_t child = ::fork();
    if (child == 0) {
        const bool isMounted = ::unshare(CLONE_NEWNS) == 0 &&
                               ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                               ::mount(folder.c_str(), place.c_str(), nullptr, MS_BIND, nullptr) == 0;
        if (isMounted) body();
        ::_exit(!isMounted ? 2 : testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == 2) GTEST_SKIP() << "this user may not mount";
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(Plans, SeeThroughFoldersThatAreMountedTwice) {
    const TemporaryFolder folder;
    const fs::path in = folder.path() / "in";
    const fs::path out = folder.path() / "out";
    const std::vector<fs::path> designs{folder.write("in/rose.dst", "1"), folder.write("in/sub/rose.pes", "2")};
    fs::create_directory(out);
    withFolderMounted(in / "sub", out, [&] {
        const auto plan = planConversions({designs, {}}, in, out, "pes");
        EXPECT_EQ(plan[0].target, out / "rose.dst.pes");
        EXPECT_EQ(plan[1].target, out / "sub/rose.pes");
        const OutputFolder output(out, in);
        EXPECT_TRUE(output.holds(in / "sub"));
        EXPECT_FALSE(output.holds(in));
        const OutputFolder same(out, in / "sub");
        EXPECT_FALSE(same.holds(in / "sub"));
        EXPECT_TRUE(same.isMixedWith(in / "sub"));
    });
}

struct OutRow {
    const char* name;
    const char* folder;
    const char* outFolder;
    const char* listed;
    bool isHeld;
    bool isMixed = false;
};
class OutputFolders : public testing::TestWithParam<OutRow> {};
TEST_P(OutputFolders, HoldWhatLiesBelowThemInTheFolder) {
    const TemporaryFolder folder;
    fs::create_directories(folder.path() / "a/b/c");
    fs::create_directories(folder.path() / "a/b/b/c");
    fs::create_directory_symlink(folder.path() / "a/b", folder.path() / "a/link");
    const auto& [name, top, outFolder, listed, isHeld, isMixed] = GetParam();
    const OutputFolder output(folder.path() / outFolder, folder.path() / top);
    EXPECT_EQ(output.holds(folder.path() / listed), isHeld);
    EXPECT_EQ(output.isMixedWith(folder.path() / listed), isMixed);
}
INSTANTIATE_TEST_SUITE_P(Rows, OutputFolders,
                         testing::Values(OutRow{"Itself", "a", "a/b", "a/b", true},
                                         OutRow{"Below", "a", "a/b/", "a/b/c", true},
                                         OutRow{"Above", "a", "a/b", "a", false},
                                         OutRow{"ThroughALink", "a", "a/b", "a/link", true},
                                         OutRow{"GivenAsALink", "a", "a/link", "a/b/c", true},
                                         OutRow{"NotThereYet", "a", "a/new/", "a/b", false},
                                         OutRow{"LikeAnother", "a", "a/bc", "a/b", false},
                                         OutRow{"TheFolderItself", "a/b", "a/b", "a/b/c", false, true},
                                         OutRow{"TheFolderByALink", "a/b", "a/link", "a/b", false, true},
                                         OutRow{"AroundTheFolder", "a/b", "a", "a/b/b/c", false, false},
                                         OutRow{"AroundWhereItWrites", "a/b", "a", "a/b/c", false, true},
                                         OutRow{"Elsewhere", "a", "elsewhere", "a/b", false}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace velamo
