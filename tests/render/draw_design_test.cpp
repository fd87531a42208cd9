#include "velamo/render/draw_design.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <new>
#include <random>

#include "tests/support/recording_context.h"
#include "tests/support/stitches.h"
#include "velamo/platform/graphics/bitmap.h"
#include "velamo/render/design_blocks.h"

namespace velamo {
namespace {

using test::change;
using test::jump;
using test::RecordingContext;
using test::stitch;
using Operations = std::vector<std::string>;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

struct Look {
    bool show3D = false;
    bool showJumps = false;
    bool showStructure = false;
    std::int32_t showThread = -1;
    DesignRect rect{-1000, -1000, 2000, 2000};
};

VLMThread threadOf(double red, double green, double blue) {
    return VLMThread::initWithColorandNameforKeyofPalettewithName(VLMColor::initWithRedgreenblue(red, green, blue), "",
                                                                  "", "", "");
}

/// A design of threads (0.5, 0.25, 0.75), (1, 0, 0), (0, 1, 0) and so on as its colour changes need them.
VLMDesign designOf(std::vector<VLMStitch> stitches) {
    VLMDesign design;
    const std::vector<VLMThread> threads{threadOf(0.5, 0.25, 0.75), threadOf(1, 0, 0), threadOf(0, 1, 0)};
    std::size_t count = 1;
    for (std::size_t i = 1; i < stitches.size(); ++i) count += stitches[i].isColorChange() ? 1 : 0;
    for (std::size_t i = 0; i < count; ++i) design.threads().push_back(threads[i % threads.size()]);
    design.setStitches(std::move(stitches));
    design.setDisplayRange({0, design.stitches().size()});
    return design;
}

VLMStitch selected(VLMStitch stitch) {
    stitch.setIsSelected(true);
    return stitch;
}

void drawInto(GraphicsContext& context, const VLMDesign& design, const Look& look) {
    drawDesignInRectofContextshow3DshowJumpsshowStructureshowThread(
        design, look.rect, context, look.show3D, look.showJumps, look.showStructure, look.showThread);
}

RecordingContext drawn(const VLMDesign& design, const Look& look = {}) {
    RecordingContext context;
    drawInto(context, design, look);
    return context;
}

/// The operations of what is drawn, without those around it.
Operations operationsOf(const VLMDesign& design, const Look& look = {}) {
    Operations operations = drawn(design, look).operations();
    EXPECT_GE(operations.size(), 3U);
    EXPECT_EQ(operations.front(), "save");
    EXPECT_EQ(operations.at(1), "round-cap");
    EXPECT_EQ(operations.back(), "restore");
    return {operations.begin() + 2, operations.end() - 1};
}

/// Ends of the lines that are stroked.
Operations linesOf(const VLMDesign& design, const Look& look = {}) {
    return drawn(design, look).operations("line");
}

struct Row {
    const char* name;
    VLMDesign (*design)();
    Look look;
    Operations operations;
};
class Drawing : public testing::TestWithParam<Row> {};
TEST_P(Drawing, AsksForTheRow) {
    EXPECT_EQ(operationsOf(GetParam().design(), GetParam().look), GetParam().operations);
}

VLMDesign twoStitches() {
    return designOf({stitch(10, 0), stitch(0, 20)});
}
VLMDesign selectedStitch() {
    return designOf({stitch(10, 0), selected(stitch(0, 20))});
}
VLMDesign activeSelection() {
    auto design = selectedStitch();
    design.setSelectionActive(true);
    return design;
}
VLMDesign hiddenThread() {
    auto design = twoStitches();
    design.setIsShownofThread(false, 0);
    return design;
}
VLMDesign lyingStitch() {
    return designOf({stitch(10, 0), stitch(20, 0)});
}
VLMDesign lyingStitchBackwards() {
    return designOf({stitch(10, 0), stitch(-20, 0)});
}
VLMDesign dimmedLyingStitch() {
    auto design = lyingStitch();
    design.setSelectionActive(true);
    return design;
}
VLMDesign oneJump() {
    return designOf({jump(10, 5)});
}
VLMDesign selectedJump() {
    return designOf({selected(jump(10, 5))});
}
VLMDesign hiddenJump() {
    auto design = oneJump();
    design.setIsShownofThread(false, 0);
    return design;
}
VLMDesign jumpAndTwoStitches() {
    return designOf({jump(10, 0), stitch(0, 20), stitch(10, 0)});
}

const Operations reliefClip{"save", "move 10 -1.225", "arc 30 0 1.225 -1.571 1.571 ccw",
                            "arc 10 0 1.225 1.571 -1.571 ccw", "clip"};
Operations joined(Operations one, const Operations& other) {
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Drawing,
    testing::Values(
        Row{"Flat",
            twoStitches,
            {},
            {"stroke-color 0.3,0.05,0.55,1", "no-dash", "width 3.5", "move 10 0", "line 10 20", "stroke",
             "stroke-color 0.5,0.25,0.75,1", "width 2.45", "move 10 0", "line 10 20", "stroke", "width 3.5"}},
        Row{"SelectedWithoutActiveSelection",
            selectedStitch,
            {},
            {"stroke-color 0.3,0.05,0.55,1", "no-dash", "width 3.5", "move 10 0", "line 10 20", "stroke",
             "stroke-color 0.5,0.25,0.75,1", "width 2.45", "move 10 0", "line 10 20", "stroke", "width 3.5",
             "stroke-color 0.8,0,0,0.6", "move 10 0", "line 10 20", "stroke"}},
        Row{"SelectedAndActiveSelectionDims",
            activeSelection,
            {},
            {"stroke-color 0.3625,0.3625,0.3625,0.1", "no-dash", "width 3.5", "move 10 0", "line 10 20", "stroke",
             "stroke-color 0.5625,0.5625,0.5625,0.1", "width 2.45", "move 10 0", "line 10 20", "stroke", "width 3.5",
             "stroke-color 0.8,0,0,0.6", "move 10 0", "line 10 20", "stroke"}},
        Row{"HiddenThreadIsDimmed",
            hiddenThread,
            {},
            {"stroke-color 0.3625,0.3625,0.3625,0.1", "no-dash", "width 3.5", "move 10 0", "line 10 20", "stroke",
             "stroke-color 0.5625,0.5625,0.5625,0.1", "width 2.45", "move 10 0", "line 10 20", "stroke", "width 3.5"}},
        Row{"StructureIsThinWithANeedlePointOfOneUnit",
            twoStitches,
            {.showStructure = true},
            {"stroke-color 0.3,0.05,0.55,1", "no-dash", "width 0.5", "move 10 0", "line 10 20", "stroke",
             "stroke-color 0.5,0.25,0.75,1", "width 0.35", "move 10 0", "line 10 20", "stroke", "width 0.5",
             "fill-color 0,0,0,1", "rectangle 9.5 19.5 1 1", "fill"}},
        Row{"Relief",
            lyingStitch,
            {.show3D = true},
            joined(joined({"stroke-color 0.3,0.05,0.55,1", "no-dash", "width 3.5", "move 10 0", "line 30 0", "stroke"},
                          reliefClip),
                   {"gradient 0:0.3,0.05,0.55,1 0.4:0.7,0.45,0.95,1 1:0.3,0.05,0.55,1 10 1.225 10 -1.225", "restore",
                    "width 3.5"})},
        Row{"ReliefBackwardsTurnsClockwise",
            lyingStitchBackwards,
            {.show3D = true},
            {"stroke-color 0.3,0.05,0.55,1", "no-dash", "width 3.5", "move 10 0", "line -10 0", "stroke", "save",
             "move 10 -1.225", "arc -10 0 1.225 -1.571 1.571 cw", "arc 10 0 1.225 1.571 -1.571 cw", "clip",
             "gradient 0:0.3,0.05,0.55,1 0.4:0.7,0.45,0.95,1 1:0.3,0.05,0.55,1 10 1.225 10 -1.225", "restore",
             "width 3.5"}},
        Row{"ReliefDimmed",
            dimmedLyingStitch,
            {.show3D = true},
            joined(joined({"stroke-color 0.3625,0.3625,0.3625,0.1", "no-dash", "width 3.5", "move 10 0", "line 30 0",
                           "stroke"},
                          reliefClip),
                   {"gradient 0:0.3625,0.3625,0.3625,0.1 0.4:0.7625,0.7625,0.7625,0.1 1:0.3625,0.3625,0.3625,0.1 "
                    "10 1.225 10 -1.225",
                    "restore", "width 3.5"})},
        Row{"JumpsAreNotShownUnlessAskedFor", oneJump, {}, {}},
        Row{"Jump",
            oneJump,
            {.showJumps = true},
            {"stroke-color 0.5,0.25,0.75,1", "width 1.75", "dash 0 2 3", "move 0 0", "line 10 5", "stroke"}},
        Row{"JumpInReliefIsDark",
            oneJump,
            {.show3D = true, .showJumps = true},
            {"stroke-color 0.3,0.05,0.55,1", "width 1.75", "dash 0 2 3", "move 0 0", "line 10 5", "stroke"}},
        Row{"JumpOfHiddenThreadIsDimmed",
            hiddenJump,
            {.show3D = true, .showJumps = true},
            {"stroke-color 0.5625,0.5625,0.5625,0.1", "width 1.75", "dash 0 2 3", "move 0 0", "line 10 5", "stroke"}},
        Row{"JumpOfStructureIsAsThinAsCanBe",
            oneJump,
            {.showJumps = true, .showStructure = true},
            {"stroke-color 0.5,0.25,0.75,1", "width 0", "dash 0 2 3", "move 0 0", "line 10 5", "stroke",
             "fill-color 0,0,0,1", "rectangle 9.5 4.5 1 1", "fill"}},
        Row{"SelectedJump",
            selectedJump,
            {.showJumps = true},
            {"stroke-color 0.5,0.25,0.75,1", "width 1.75", "dash 0 2 3", "move 0 0", "line 10 5", "stroke",
             "stroke-color 0.8,0,0,0.6", "move 0 0", "line 10 5", "stroke"}},
        Row{"StitchBehindAJumpIsDashedToo",
            jumpAndTwoStitches,
            {.showJumps = true},
            {"stroke-color 0.5,0.25,0.75,1", "width 1.75", "dash 0 2 3", "move 0 0",   "line 10 0",  "stroke",
             "stroke-color 0.5,0.25,0.75,1", "width 1.75", "dash 0 2 3", "move 10 0",  "line 10 20", "stroke",
             "stroke-color 0.3,0.05,0.55,1", "no-dash",    "width 3.5",  "move 10 20", "line 20 20", "stroke",
             "stroke-color 0.5,0.25,0.75,1", "width 2.45", "move 10 20", "line 20 20", "stroke",     "width 3.5"}}),
    [](const auto& row) { return row.param.name; });

TEST(DrawingNothing, WithoutStitchesOrThreads) {
    EXPECT_TRUE(drawn(VLMDesign()).operations().empty());
    auto design = twoStitches();
    design.setThreads({});
    EXPECT_TRUE(drawn(design).operations().empty());
    design = twoStitches();
    design.setStitches({});
    EXPECT_TRUE(drawn(design).operations().empty());
}

/// A context that can do so many operations, and has no memory for more.
class TiringContext final : public GraphicsContext {
public:
    explicit TiringContext(int operations) noexcept : left_(operations) {}
    [[nodiscard]] int statesSaved() const noexcept { return statesSaved_; }
    [[nodiscard]] bool isTired() const noexcept { return left_ < 0; }

    void saveState() override {
        work();
        ++statesSaved_;
    }
    void restoreState() override { --statesSaved_; }
    void translate(double, double) override { work(); }
    void scale(double, double) override { work(); }
    void setRoundLineCap() override { work(); }
    void setStrokeColor(const GraphicsColor&) override { work(); }
    void setFillColor(const GraphicsColor&) override { work(); }
    void setLineWidth(double) override { work(); }
    void setLineDash(double, double, double) override { work(); }
    void clearLineDash() override { work(); }
    void moveTo(GraphicsPoint) override { work(); }
    void addLineTo(GraphicsPoint) override { work(); }
    void addArc(GraphicsPoint, double, double, double, bool) override { work(); }
    void addRectangle(const GraphicsRectangle&) override { work(); }
    void strokePath() override { work(); }
    void fillPath() override { work(); }
    void clipToPath() override { work(); }
    void drawLinearGradient(std::span<const GradientStop>, GraphicsPoint, GraphicsPoint) override { work(); }

private:
    void work() {
        if (--left_ < 0) throw std::bad_alloc();
    }
    int left_;
    int statesSaved_ = 0;
};

TEST(DrawingThatBreaksOff, LeavesNoStateSaved) {
    const auto design = designOf({stitch(0, 0), stitch(10, 0), selected(stitch(0, 10)), jump(5, 5), stitch(3, 4)});
    int operations = 0;
    for (bool isTired = true; isTired; ++operations) {
        TiringContext context(operations);
        drawInto(context, design, {.show3D = true, .showJumps = true, .showStructure = true});
        ASSERT_EQ(context.statesSaved(), 0) << operations;
        isTired = context.isTired();
    }
    EXPECT_GT(operations, 30);
}

TEST(DrawingRelief, CapsOfSteepStitchesAreTurnedByTheSine) {
    const auto arcs = drawn(twoStitches(), {.show3D = true}).operations("arc");  // straight up: the sine is 1
    EXPECT_EQ(arcs, (Operations{"arc 10 20 1.225 -0.571 2.571 ccw", "arc 10 0 1.225 2.571 -0.571 ccw"}));
}

TEST(DrawingFirst, StitchIsNeverDrawnAsANormalOne) {
    EXPECT_TRUE(operationsOf(designOf({stitch(10, 0)})).empty());
    EXPECT_EQ(operationsOf(designOf({stitch(10, 0)}), {.showJumps = true}).at(2), "dash 0 2 3");
}

TEST(DrawingBehind, AColorChangeIsAsBehindAJump) {
    const auto design = designOf({stitch(10, 0), change(0, 10), stitch(10, 0), stitch(0, 10)});
    // The change itself follows a stitch and is sewn, in the new thread's colour; the stitch behind it is not.
    EXPECT_EQ(linesOf(design), (Operations{"line 10 10", "line 10 10", "line 20 20", "line 20 20"}));
    EXPECT_EQ(operationsOf(design).at(0), "stroke-color 0.8,-0.2,-0.2,1");
}

TEST(DrawingNull, StitchesAreLeftOutAndStillCountAsStitches) {
    const auto design = designOf({jump(10, 0), stitch(0, 0), stitch(0, 10)});
    EXPECT_EQ(linesOf(design), (Operations{"line 10 10", "line 10 10"}));
    EXPECT_EQ(linesOf(design, {.showJumps = true}).size(), 3U);
}

TEST(DrawingThread, AloneStillSumsTheMovesBefore) {
    const auto design = designOf({stitch(1, 0), stitch(2, 0), change(0, 0), stitch(4, 0), stitch(8, 0), change(0, 0),
                                  stitch(16, 0), stitch(32, 0)});
    EXPECT_EQ(linesOf(design, {.showThread = 2}), (Operations{"line 63 0", "line 63 0"}));
    EXPECT_EQ(linesOf(design, {.showThread = 1}), (Operations{"line 15 0", "line 15 0"}));
    EXPECT_EQ(linesOf(design).size(), 6U);
    EXPECT_TRUE(linesOf(design, {.showThread = 3}).empty());
    EXPECT_TRUE(linesOf(design, {.showThread = -2}).empty());
}

TEST(DrawingAll, IsDrawingWithoutAThread) {
    const auto design = designOf({stitch(1, 0), stitch(2, 0), change(0, 0), stitch(4, 0), jump(8, 0)});
    RecordingContext context;
    drawDesignInRectofContextshow3DshowJumpsshowStructure(design, Look().rect, context, true, true, true);
    EXPECT_EQ(context.operations(),
              drawn(design, {.show3D = true, .showJumps = true, .showStructure = true}).operations());
}

TEST(DrawingRange, TakesOneStitchMoreOnEitherSide) {
    auto design = designOf(std::vector<VLMStitch>(30, stitch(1, 0)));
    design.setDisplayRange({10, 5});
    Operations expected;
    for (const char* line : {"10", "11", "12", "13", "14", "15", "16"})  // the ends of stitches 9 to 15
        expected.insert(expected.end(), 2, std::string("line ") + line + " 0");
    EXPECT_EQ(linesOf(design), expected);
}

TEST(DrawingRange, ThatOverflowsReachesToTheEnd) {
    auto design = designOf(std::vector<VLMStitch>(5, stitch(1, 0)));
    design.setDisplayRange({3, std::numeric_limits<std::uint64_t>::max()});
    EXPECT_EQ(linesOf(design), (Operations{"line 3 0", "line 3 0", "line 4 0", "line 4 0", "line 5 0", "line 5 0"}));
    design.setDisplayRange({std::numeric_limits<std::uint64_t>::max(), 1});
    EXPECT_TRUE(linesOf(design).empty());
}

TEST(DrawingUnseen, StitchesAreLeftOutButNoJumps) {
    // The rectangle grown by 50 reaches from (-50, -50) to (60, 60), its far edges excluded.
    const auto far = designOf({jump(60, 0), stitch(0, 0), stitch(0, 1), jump(1, 0)});
    EXPECT_EQ(linesOf(far, {.showJumps = true, .rect = {0, 0, 10, 10}}), (Operations{"line 60 0", "line 61 1"}));
    const auto into = designOf({jump(60, 0), stitch(0, 0), stitch(-0.5F, 0), stitch(10, 0)});
    EXPECT_EQ(linesOf(into, {.rect = {0, 0, 10, 10}}).size(), 4U);  // one end inside is enough
    const auto across = designOf({jump(-60, 0), stitch(0, 0), stitch(200, 0)});
    EXPECT_TRUE(linesOf(across, {.rect = {0, 0, 10, 10}}).empty());
}

TEST(DrawingColorChanges, BeyondTheThreadsEndIt) {
    auto design = designOf({stitch(1, 0), stitch(2, 0), change(0, 0), stitch(4, 0), stitch(8, 0)});
    design.threads().all().pop_back();
    EXPECT_EQ(linesOf(design), (Operations{"line 3 0", "line 3 0"}));
    EXPECT_EQ(drawn(design).operations().back(), "restore");
}

TEST(DrawingColorChanges, AtTheFirstStitchIsThatOfTheFirstThread) {
    const auto design = designOf({change(1, 0), stitch(2, 0), stitch(4, 0)});
    ASSERT_EQ(design.threads().size(), 1U);
    EXPECT_EQ(operationsOf(design).at(0), "stroke-color 0.3,0.05,0.55,1");
    EXPECT_EQ(linesOf(design).size(), 2U);
}

// ---- with a bitmap

constexpr int side = 120;

std::vector<std::uint8_t> pictureOf(const VLMDesign& design, const Look& look, double scale = 1) {
    auto bitmap = Bitmap::make(side, side);
    EXPECT_TRUE(bitmap->paint([&](GraphicsContext& context) {
        context.scale(scale, scale);
        drawInto(context, design, look);
    }));
    return bitmap->rgba();
}

std::vector<int> pixelAt(const std::vector<std::uint8_t>& picture, DesignPoint place) {
    const auto row = side - 1 - static_cast<std::size_t>(place.y);
    const auto* const pixel = &picture.at((row * side + static_cast<std::size_t>(place.x)) * 4);
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

struct HostileRow {
    const char* name;
    VLMStitch stitch;
};
std::string nameOf(const testing::TestParamInfo<HostileRow>& row) {
    return row.param.name;
}

/// Stitches to nowhere and back a hundred times, behind two that can be seen.
std::vector<VLMStitch> hostileStitches(const VLMStitch& wild) {
    std::vector<VLMStitch> stitches{stitch(20, 20), stitch(50, 30)};
    for (int i = 0; i < 100; ++i) {
        stitches.push_back(wild);
        stitches.push_back({-wild.deltaX(), -wild.deltaY(), wild.isJumpStitch(), false});
    }
    return stitches;
}

class StitchToNoPlace : public testing::TestWithParam<HostileRow> {};
TEST_P(StitchToNoPlace, LosesNothingBefore) {
    for (const bool show3D : {false, true}) {
        const Look look{.show3D = show3D, .showJumps = true};
        EXPECT_EQ(pictureOf(designOf(hostileStitches(GetParam().stitch)), look),
                  pictureOf(designOf({stitch(20, 20), stitch(50, 30)}), look));
    }
}
INSTANTIATE_TEST_SUITE_P(Rows, StitchToNoPlace,
                         testing::Values(HostileRow{"Infinite", stitch(infinity, 1)},
                                         HostileRow{"InfiniteJump", jump(infinity, -infinity)},
                                         HostileRow{"NotANumber", stitch(0, notANumber)},
                                         HostileRow{"JumpToNoNumber", jump(notANumber, 0)}),
                         nameOf);

class StitchToAFarPlace : public testing::TestWithParam<HostileRow> {};
TEST_P(StitchToAFarPlace, LosesNothingBehind) {
    auto stitches = hostileStitches(GetParam().stitch);
    DesignPoint end;
    for (const VLMStitch& stitch : stitches) end = {end.x + stitch.deltaX(), end.y + stitch.deltaY()};
    // Home, and then a stitch in the second thread's colour.
    stitches.insert(stitches.end(), {jump(static_cast<float>(-end.x), static_cast<float>(-end.y)), change(90, 20),
                                     stitch(0, 0), stitch(20, 20)});
    const auto picture = pictureOf(designOf(stitches), {.showJumps = true});
    EXPECT_EQ(pixelAt(picture, {100, 30}), (std::vector<int>{255, 0, 0, 255}));
    const auto relief = pictureOf(designOf(stitches), {.show3D = true, .showJumps = true});
    EXPECT_GT(pixelAt(relief, {100, 30})[0], 200);
}
INSTANTIATE_TEST_SUITE_P(Rows, StitchToAFarPlace,
                         testing::Values(HostileRow{"Huge", stitch(1e30F, 3)},
                                         HostileRow{"HugeJump", jump(1e30F, 1e30F)},
                                         HostileRow{"Largest", jump(3e38F, -3e38F)}, HostileRow{"Far", stitch(1e8F, 3)},
                                         HostileRow{"FarJump", jump(-1e8F, 1e7F)}),
                         nameOf);

TEST(HostileJumps, OfHugeLengthAreDrawnInNoTime) {
    std::vector<VLMStitch> stitches{jump(60, 60)};
    for (int i = 0; i < 2000; ++i) stitches.insert(stitches.end(), {jump(1e9F, 1e9F), jump(-1e9F, -1e9F)});
    const auto picture = pictureOf(designOf(stitches), {.showJumps = true});
    EXPECT_GT(pixelAt(picture, {61, 61})[3], 200);
}

TEST(HostileJumps, HaveTheirDashesWhereShortOnesHaveThem) {
    const auto shortest = pictureOf(designOf({jump(60, 60), jump(200, 200)}), {.showJumps = true});
    const auto longest = pictureOf(designOf({jump(60, 60), jump(1e6F, 1e6F)}), {.showJumps = true});
    for (std::size_t i = 61; i < side; ++i) {
        const auto place = static_cast<double>(i);
        EXPECT_NEAR(pixelAt(longest, {place, place})[3], pixelAt(shortest, {place, place})[3], 3) << i;
    }
}

/// Blocks of random stitches, jumps and selected stitches, some off the picture and some threads hidden.
VLMDesign randomDesign(unsigned seed) {
    std::mt19937 random(seed);
    std::vector<VLMStitch> stitches;
    for (int i = 0; i < 400; ++i) {
        const auto delta = [&] { return static_cast<float>(static_cast<int>(random() % 61) - 29); };
        VLMStitch next(delta(), delta(), random() % 9 == 0, random() % 40 == 0);
        if (random() % 20 == 0) next.setDeltaX(0), next.setDeltaY(0);
        next.setIsSelected(random() % 10 == 0);
        stitches.push_back(next);
    }
    auto design = designOf(std::move(stitches));
    for (VLMThread& thread : design.threads()) thread.setIsShown(random() % 4 != 0);
    design.setSelectionActive(seed % 3 == 0);
    if (seed % 4 == 1) design.setDisplayRange({100, 200});
    if (seed % 5 == 1) design.threads().all().pop_back();
    return design;
}

TEST(Blocks, AloneAreDrawnAsByTheirThread) {
    for (unsigned seed = 0; seed < 30; ++seed) {
        const auto design = randomDesign(seed);
        const DesignBlocks blocks(design);
        const DesignRect rect{0, 0, side, side};
        EXPECT_LE(blocks.size(), design.threads().size());
        for (std::size_t block = 0; block < blocks.size(); ++block) {
            RecordingContext context;
            blocks.drawBlockInRectofContext(block, rect, context);
            const auto thread = static_cast<std::int32_t>(block);
            EXPECT_EQ(context.operations(), drawn(design, {.showThread = thread, .rect = rect}).operations())
                << "seed " << seed << ", block " << block;
        }
    }
}

TEST(Blocks, HaveBoundsRoundTheirStitchesAndTheirStart) {
    const auto design = designOf({stitch(10, 20), stitch(-30, 0), change(5, 5), jump(1, 2), stitch(infinity, 0)});
    const DesignBlocks blocks(design);
    ASSERT_EQ(blocks.size(), 2U);
    EXPECT_EQ(blocks.boundsOf(0), (DesignRect{-20, 0, 30, 20}));
    EXPECT_EQ(blocks.boundsOf(1), (DesignRect{-20, 20, 6, 7}));
    EXPECT_EQ(DesignBlocks(VLMDesign()).size(), 0U);
}

}  // namespace
}  // namespace velamo
