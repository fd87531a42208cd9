// Archives are folders to those who read.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/support.h"
#include "tests/support/archives.h"

namespace velamo {
namespace {

using test::call;
using testing::HasSubstr;

class Archives : public testing::Test {
protected:
    Archives() {
        folder_.write("pack.zip", test::zipOf({{.name = "5x7/rose.dst", .bytes = test::twoColorDst},
                                               {.name = "leaf.dst", .bytes = test::smallDst},
                                               {.name = "bell\a.dst", .bytes = test::smallDst, .flags = 1}}));
        before_ = namesBelow();
        archiveBefore_ = bytesOfArchive();
    }
    ~Archives() override { EXPECT_EQ(bytesOfArchive(), archiveBefore_); }
    Archives(const Archives&) = delete;
    Archives& operator=(const Archives&) = delete;

    [[nodiscard]] std::string path(const std::string& name) const { return (folder_.path() / name).native(); }
    /// That a call is refused for its target, and nothing new is there.
    void expectRefusal(const std::vector<std::string>& arguments, const std::string& target) const {
        const auto outcome = call(arguments);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.problems, "velamo: " + target + ": Nothing is written into an archive. (error 30)\n");
        EXPECT_EQ(namesBelow(), before_);
    }
    [[nodiscard]] std::vector<std::string> namesBelow() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.path()))
            names.push_back(entry.path().native());
        return names;
    }

private:
    [[nodiscard]] std::string bytesOfArchive() const {
        return test::TemporaryFolder::read(folder_.path() / "pack.zip");
    }

    test::TemporaryFolder folder_;
    std::vector<std::string> before_;
    std::string archiveBefore_;
};

TEST_F(Archives, AreLookedInto) {
    const auto described = call({"info", path("pack.zip/5x7/rose.dst"), path("pack.zip/none.dst")});
    EXPECT_EQ(described.status, 1);
    EXPECT_THAT(described.out, testing::StartsWith("rose.dst (DST"));
    EXPECT_EQ(described.problems, "velamo: " + path("pack.zip/none.dst") + ": No such file or directory (error 2)\n");
    const auto dumped = call({"dump", path("pack.zip/leaf.dst")});
    EXPECT_EQ(dumped.status, 0);
    EXPECT_EQ(dumped.json()["designName"], "leaf.dst");
    const auto listed = call({"info", "--json", path("pack.zip/leaf.dst")});
    EXPECT_EQ(listed.json()[0]["file"], path("pack.zip/leaf.dst"));
}

TEST_F(Archives, AreSourcesOfNewFiles) {
    EXPECT_EQ(call({"convert", path("pack.zip/5x7/rose.dst"), path("rose.exp")}).status, 0);
    EXPECT_EQ(call({"render", path("pack.zip/leaf.dst"), path("leaf.png")}).status, 0);
    EXPECT_EQ(call({"edit", path("pack.zip/5x7/rose.dst"), "-e", "append " + path("pack.zip/leaf.dst"), "-o",
                    path("both.dst")})
                  .status,
              0);
    const auto both = call({"info", "--json", path("rose.exp"), path("both.dst")}).json();
    EXPECT_LT(both[0]["stitches"].get<double>(), both[1]["stitches"].get<double>());
    EXPECT_TRUE(std::filesystem::exists(path("leaf.png")));
}

TEST_F(Archives, AreNotWrittenInto) {
    const auto rose = path("pack.zip/5x7/rose.dst");
    expectRefusal({"convert", rose, path("pack.zip/rose.pes")}, path("pack.zip/rose.pes"));
    expectRefusal({"convert", rose, path("pack.zip/5x7/rose.dst")}, path("pack.zip/5x7/rose.dst"));
    expectRefusal({"render", rose, path("pack.zip/rose.png")}, path("pack.zip/rose.png"));
    for (const char* out : {"pack.zip", "pack.zip/", "pack.zip/new"})
        expectRefusal({"convert", "--all", path(""), "--to", "pes", "--out", path(out)}, path(out));
    const auto edited = call({"edit", rose, "-e", "center", "-o", rose});
    EXPECT_EQ(edited.status, 1);
    EXPECT_THAT(edited.problems, HasSubstr("Nothing is written into an archive."));
}

TEST_F(Archives, AreNamedHarmlesslyOnATerminal) {
    const auto outcome = call({"info", path("pack.zip/bell\a.dst")}, true);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.problems,
              "velamo: " + path("pack.zip/bell\\x07.dst") + ": it is protected by a password (error 13)\n");
}

TEST_F(Archives, StopAppendingWhereTheyLackAFile) {
    const auto outcome = call({"edit", path("pack.zip/leaf.dst"), "-e", "append " + path("pack.zip/none.dst")});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.problems, HasSubstr(path("pack.zip/none.dst") + ": No such file or directory"));
}

}  // namespace
}  // namespace velamo
