#include "cli/format_loss.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/support.h"
#include "tests/support/designs.h"
#include "tests/support/janome_files.h"
#include "velamo/formats/format.h"

namespace velamo {
namespace {

using test::call;
using test::change;
using test::jump;
using test::sewn;
using test::stitch;
using test::TemporaryFolder;
using testing::HasSubstr;

VLMThread colored(double red) {
    return VLMThread::initWithColorandNameforKeyofPalettewithName(VLMColor::initWithRedgreenblue(red, 0, 0), "", "", "",
                                                                  "");
}
VLMThread colorless() {
    return test::threadOf("1", "Undefined");
}

struct ColorRow {
    const char* name;
    std::vector<VLMThread> wanted;
    std::vector<VLMThread> found;
    const char* loss;
};
class ColorLosses : public testing::TestWithParam<ColorRow> {};
TEST_P(ColorLosses, AreTold) {
    const VLMDesign design = sewn({stitch(1, 1)});
    EXPECT_EQ(lossOf({GetParam().wanted, design, design, GetParam().found}), GetParam().loss);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, ColorLosses,
    testing::Values(
        ColorRow{"None", {colored(0.5)}, {colored(0.5)}, ""},
        ColorRow{"RoundedToAByte", {colored(0.5)}, {colored(127 / 255.0)}, ""},
        ColorRow{"Another", {colored(0.5)}, {colored(0.4)}, "with the nearest color there is for its thread"},
        ColorRow{"SomeOthers",
                 {colored(0.5), colored(0.1), colored(0.5)},
                 {colored(0.4), colored(0.1), colored(0.4)},
                 "with the nearest color there is for 2 of its 3 threads"},
        ColorRow{"OneGone", {colored(0.5)}, {colorless()}, "without its color"},
        ColorRow{"AllGone", {colored(0.5), colored(0.1)}, {colorless(), colorless()}, "without its 2 colors"},
        ColorRow{"OfAColorless", {colorless()}, {colored(0.3)}, ""},
        ColorRow{
            "FewerThreads", {colored(0.5), colored(0.1), colored(0)}, {colored(0.5)}, "without 2 of its 3 threads"},
        ColorRow{"MoreThreads", {colored(0.5)}, {colored(0.5), colored(0.1)}, "with a thread more"},
        ColorRow{"ManyMoreThreads",
                 {colored(0.5)},
                 {colored(0.4), colored(0.1), colored(0.1)},
                 "with the nearest color there is for its thread, with 2 threads more"}),
    [](const auto& row) { return row.param.name; });

struct MoveRow {
    const char* name;
    std::vector<VLMStitch> written;
    std::vector<VLMStitch> found;
    const char* loss;
};
class MoveLosses : public testing::TestWithParam<MoveRow> {};
TEST_P(MoveLosses, AreTold) {
    const VLMDesign written = sewn(GetParam().written);
    const VLMDesign readBack = sewn(GetParam().found);
    EXPECT_EQ(lossOf({{}, written, readBack, {}}), GetParam().loss);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, MoveLosses,
    testing::Values(MoveRow{"None", {stitch(1, 1), jump(2, 2)}, {stitch(1, 1), jump(2, 2)}, ""},
                    MoveRow{"TheLast", {stitch(1, 1), stitch(2, 2)}, {stitch(1, 1)}, "without the last stitch"},
                    MoveRow{"TheLastTwo",
                            {stitch(1, 1), change(0, 0), stitch(2, 2), stitch(3, 3)},
                            {stitch(1, 1), change(0, 0)},
                            "without the last 2 stitches"},
                    MoveRow{"RecordOfTheChange",
                            {stitch(1, 1), change(0, 0), stitch(2, 2), stitch(3, 3)},
                            {stitch(1, 1), change(0, 0), stitch(0, 0), stitch(2, 2)},
                            "without the last stitch"},
                    MoveRow{"RoundedAway",
                            {stitch(1, 1), stitch(0.1F, 0), stitch(3, 3)},
                            {stitch(1, 1), stitch(0, 0), stitch(3, 3)},
                            ""},
                    MoveRow{"Start", {stitch(1, 1), stitch(2, 2)}, {jump(0, 0), stitch(1, 1), stitch(2, 2)}, ""}),
    [](const auto& row) { return row.param.name; });

/// What the program says of a design of three colors in each format.
struct FormatRow {
    const char* extension;
    const char* said;
};
class FormatLosses : public testing::TestWithParam<FormatRow> {
protected:
    TemporaryFolder folder_;
    std::string at(const std::string& name) { return (folder_.path() / name).native(); }
};
TEST_P(FormatLosses, AreSaidInALine) {
    folder_.write("rose.dst", test::twoColorDst);
    const std::string target = at("new." + std::string(GetParam().extension));
    const auto outcome = call({"edit", at("rose.dst"), "-e", "recolor 0 0.5 0.123 0.3 ''", "-o", target});
    EXPECT_EQ(outcome.status, 0);
    const std::string said = GetParam().said;
    EXPECT_EQ(outcome.problems, said.empty() ? "" : "velamo: " + target + ": written " + said + "\n");
}
INSTANTIATE_TEST_SUITE_P(Rows, FormatLosses,
                         testing::Values(FormatRow{"dst", "without its color"}, FormatRow{"exp", "without its color"},
                                         FormatRow{"jef", "with the nearest color there is for 1 of its 2 threads"},
                                         FormatRow{"pes", "with the nearest color there is for 1 of its 2 threads"},
                                         FormatRow{"pec", "with the nearest color there is for 1 of its 2 threads"},
                                         FormatRow{"pcs", "without the last stitch"}),
                         [](const auto& row) { return row.param.extension; });

TEST_F(FormatLosses, AreNoneWhereColorsWereUnknown) {
    folder_.write("rose.dst", test::diagonalDst);
    for (const Format& format : allFormats()) {
        if (format.writer == nullptr) continue;
        const auto outcome = call({"convert", at("rose.dst"), at("new." + std::string(format.extension))});
        EXPECT_EQ(outcome.problems, "") << format.extension;
    }
}

/// More threads than blocks cannot be read again in these formats.
class Unreadable : public FormatLosses {};
TEST_P(Unreadable, IsRefusedBeforeTheTargetIsReplaced) {
    folder_.write("rose.sew", test::sewFile({1, 2, 3, 4, 5, 6, 7, 8}, test::bytes(10, 0xF6, test::janomeEnd)));
    const std::string name = "old." + std::string(GetParam().extension);
    folder_.write(name, "old");
    const auto outcome = call({"convert", at("rose.sew"), at(name)});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.problems, HasSubstr("velamo: " + at(name) + ": The new file could not be read again: "));
    EXPECT_THAT(outcome.problems, HasSubstr(GetParam().said));
    EXPECT_EQ(TemporaryFolder::read(at(name)), "old");
}
INSTANTIATE_TEST_SUITE_P(Rows, Unreadable,
                         testing::Values(FormatRow{"jef", "(error 24)"}, FormatRow{"pcs", "(error 160)"}),
                         [](const auto& row) { return row.param.extension; });

}  // namespace
}  // namespace velamo
