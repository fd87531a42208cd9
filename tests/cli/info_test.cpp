#include "cli/info.h"

#include <gtest/gtest.h>

#include "tests/cli/support.h"

namespace velamo {
namespace {

using test::call;

const char* const description =
    "(DST Version 1.0)\nsize: 1.0 mm x 8.1 mm\n3 stitches including 1 jumps\n"
    "2 color changes with 1 different colors\n1. Individual color (204, 204, 204)\n"
    "2. Individual color (204, 204, 204)\n";

class Info : public testing::Test {
protected:
    test::TemporaryFolder folder_;
    std::string sound_ = folder_.write("small.dst", test::smallDst);
    std::string torn_ = folder_.write("torn.dst", std::string("LA:"));
};

TEST_F(Info, DescribesEachDesign) {
    const auto outcome = call({"info", sound_, sound_});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, std::string("small.dst ") + description + "\nsmall.dst " + description);
}

TEST_F(Info, GoesOnAfterABrokenFile) {
    const auto outcome = call({"info", torn_, sound_});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, std::string("small.dst ") + description);
    EXPECT_EQ(outcome.problems, "velamo: " + torn_ + ": Unable to import DST file (missing header). (error 123)\n");
}

TEST_F(Info, GivesFiguresAsJson) {
    const auto outcome = call({"info", "--json", sound_, torn_});
    EXPECT_EQ(outcome.status, 1);
    const auto json = outcome.json();
    ASSERT_EQ(json.size(), 2U);
    EXPECT_EQ(json[0]["file"], sound_);
    EXPECT_EQ(json[0]["width"], 1.0);
    EXPECT_EQ(json[0]["height"], 8.1);  // not 8.100000381469727
    EXPECT_EQ(json[0]["stitches"], 3);
    EXPECT_EQ(json[0]["colors"], 1);
    EXPECT_EQ(json[0]["statistics"]["designHeight"], 81);
    EXPECT_EQ(json[1]["file"], torn_);
    EXPECT_EQ(json[1]["error"]["code"], 123);
    EXPECT_EQ(call({"info", "--json", sound_}).json().size(), 1U);
}

TEST_F(Info, LetsNoNameCommandATerminal) {
    const auto odd = folder_.write("a\x1b[31m\nb.dst", test::smallDst);
    EXPECT_EQ(call({"info", odd}, true).out, std::string("a\\x1b[31m\\nb.dst ") + description);
    EXPECT_EQ(call({"info", odd}).out, std::string("a\x1b[31m\nb.dst ") + description);
    EXPECT_EQ(call({"info", "\x1b.dst"}, true).problems,
              "velamo: \\x1b.dst: Unable to import DST file (missing header). (error 123)\n");
}

}  // namespace
}  // namespace velamo
