#include "velamo/render/draw_design.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "velamo/model/failure.h"
#include "velamo/model/needle_walk.h"
#include "velamo/render/design_blocks.h"

namespace velamo {
namespace {

constexpr double thinStitch = 0.5;
constexpr double innerWidth = 0.7;        // of the line width
constexpr double widthOfJump = 0.5;       // of the line width
constexpr double leastWidthOfJump = 0.5;  // below it, the thinnest line
constexpr double dashOn = 2;
constexpr double dashOff = 3;
constexpr double unseenMargin = 50;  // stitches so far outside may still reach into what is seen
constexpr double needlePointSide = 1;
constexpr double quarterTurn = 1.571;
constexpr double dimAlpha = 0.1;
constexpr double shade = 0.2;  // what a thread's rim is darker and its ridge lighter
constexpr GraphicsColor selectionVeil{0.8, 0, 0, 0.6};
constexpr GraphicsColor needlePointColor{0, 0, 0, 1};

using Relief = std::array<GradientStop, 3>;

/// The colours that one thread is drawn with.
struct Inks {
    GraphicsColor thread;
    GraphicsColor dark;
    Relief relief;
};

GraphicsColor shaded(const GraphicsColor& color, double by) noexcept {
    return {color.red + by, color.green + by, color.blue + by, color.alpha};
}

Inks inksOf(const GraphicsColor& color) noexcept {
    const GraphicsColor dark = shaded(color, -shade);
    return {color, dark, {{{0, dark}, {0.4, shaded(color, shade)}, {1, dark}}}};
}

Inks plainInksOf(const VLMColor& color) noexcept {
    return inksOf({color.red(), color.green(), color.blue(), 1});
}

Inks dimmedInksOf(const VLMColor& color) noexcept {
    const double grey = 0.21 * color.red() + 0.71 * color.green() + 0.08 * color.blue() + 0.22;
    return inksOf({grey, grey, grey, dimAlpha});
}

/// Saves the context's state and restores it at the end of the scope, also where drawing breaks off.
class SavedState {
public:
    explicit SavedState(GraphicsContext& context) : context_(context) { context.saveState(); }
    ~SavedState() {
        static_cast<void>(operation(nullptr, [&] {
            context_.restoreState();
            return true;
        }));
    }
    SavedState(const SavedState&) = delete;
    SavedState& operator=(const SavedState&) = delete;

private:
    GraphicsContext& context_;
};

/// Ways to draw a design.
struct Look {
    bool show3D = false;
    bool showJumps = false;
    bool showStructure = false;
};

/// The stitches from where the walk stands, at the start of a colour block, up to `end`.
struct Run {
    NeedleWalk walk;
    std::size_t end = 0;
};

class StitchPainter {
public:
    StitchPainter(const VLMDesign& design, const DesignRect& rect, GraphicsContext& context, const Look& look) noexcept
        : design_(design),
          context_(context),
          look_(look),
          near_{rect.x - unseenMargin, rect.y - unseenMargin, rect.width + 2 * unseenMargin,
                rect.height + 2 * unseenMargin},
          lineWidth_(look.showStructure ? thinStitch : widestStitch),
          jumpWidth_(lineWidth_ * widthOfJump >= leastWidthOfJump ? lineWidth_ * widthOfJump : 0) {}

    /// All of the run, or what belongs to the thread `showThread` when that is not -1.
    void draw(Run run, std::int64_t showThread);

private:
    struct Move {
        const VLMStitch& stitch;
        DesignPoint start;
        DesignPoint end;
    };

    void takeThread(const VLMThread& thread) noexcept;
    [[nodiscard]] bool isVisible(const Move& move) const noexcept;
    void strokeLine(const Move& move);
    void drawStitch(const Move& move);
    void drawRelief(const Move& move);
    void drawJump(const Move& move);
    void drawMarks(const Move& move);

    const VLMDesign& design_;
    GraphicsContext& context_;
    Look look_;
    DesignRect near_;
    double lineWidth_;
    double jumpWidth_;
    bool isPlain_ = true;
    Inks inks_;
};

void StitchPainter::takeThread(const VLMThread& thread) noexcept {
    isPlain_ = !design_.selectionActive() && thread.isShown();
    inks_ = isPlain_ ? plainInksOf(thread.color()) : dimmedInksOf(thread.color());
}

bool StitchPainter::isVisible(const Move& move) const noexcept {
    return !move.stitch.isNullStitch() &&
           (move.stitch.isJumpStitch() || near_.contains(move.start) || near_.contains(move.end));
}

void StitchPainter::draw(Run run, std::int64_t showThread) {
    const auto& stitches = design_.stitches().all();
    const auto [location, length] = design_.displayRange();
    const std::uint64_t last = location + std::min(length, std::numeric_limits<std::uint64_t>::max() - location);
    bool isThreadDrawn = false;
    while (run.walk.stitch() < run.end && run.walk.stitch() <= last) {
        const VLMStitch& stitch = stitches[run.walk.stitch()];
        const NeedleMove needle = run.walk.take(stitch);
        if (needle.startsBlock) {
            if (needle.thread >= design_.threads().size()) return;
            isThreadDrawn = showThread == -1 || showThread == static_cast<std::int64_t>(needle.thread);
            takeThread(design_.threads()[needle.thread]);
        }
        const Move move{stitch, needle.start, needle.end};
        if (isThreadDrawn && location <= needle.stitch + 1 && isVisible(move)) {
            if (needle.isSewn)
                drawStitch(move);
            else if (look_.showJumps)
                drawJump(move);
        }
    }
}

void StitchPainter::strokeLine(const Move& move) {
    context_.moveTo({move.start.x, move.start.y});
    context_.addLineTo({move.end.x, move.end.y});
    context_.strokePath();
}

void StitchPainter::drawStitch(const Move& move) {
    context_.setStrokeColor(inks_.dark);
    context_.clearLineDash();
    context_.setLineWidth(lineWidth_);
    strokeLine(move);
    if (look_.show3D) {
        drawRelief(move);
    } else {
        context_.setStrokeColor(inks_.thread);
        context_.setLineWidth(lineWidth_ * innerWidth);
        strokeLine(move);
    }
    context_.setLineWidth(lineWidth_);
    drawMarks(move);
}

void StitchPainter::drawRelief(const Move& move) {
    const auto [stitch, start, end] = move;
    const double radius = lineWidth_ * innerWidth * 0.5;
    const float angle = std::atan(static_cast<float>((end.y - start.y) / (end.x - start.x)));
    const double sine = std::sin(angle);
    const double x = radius * sine;
    const double y = radius * static_cast<double>(std::cos(angle));
    const bool isClockwise = start.x > end.x;
    const SavedState saved(context_);
    // The caps are turned by the sine in place of the angle: steep stitches look a little skewed, as they always have.
    context_.moveTo({start.x + x, start.y - y});
    context_.addArc({end.x, end.y}, radius, sine - quarterTurn, sine + quarterTurn, isClockwise);
    context_.addArc({start.x, start.y}, radius, sine + quarterTurn, sine - quarterTurn, isClockwise);
    context_.clipToPath();
    context_.drawLinearGradient(inks_.relief, {start.x - x, start.y + y}, {start.x + x, start.y - y});
}

void StitchPainter::drawJump(const Move& move) {
    context_.setStrokeColor(isPlain_ && look_.show3D ? inks_.dark : inks_.thread);
    context_.setLineWidth(jumpWidth_);
    context_.setLineDash(0, dashOn, dashOff);
    strokeLine(move);
    drawMarks(move);
}

/// The line width is that of the line which is marked.
void StitchPainter::drawMarks(const Move& move) {
    if (move.stitch.isSelected()) {
        context_.setStrokeColor(selectionVeil);
        strokeLine(move);
    }
    if (!look_.showStructure) return;
    context_.setFillColor(needlePointColor);
    context_.addRectangle(
        {move.end.x - needlePointSide / 2, move.end.y - needlePointSide / 2, needlePointSide, needlePointSide});
    context_.fillPath();
}

void drawRun(const VLMDesign& design, const DesignRect& rect, GraphicsContext& context, const Look& look,
             const Run& run, std::int64_t showThread) noexcept {
    if (design.stitches().empty() || design.threads().empty()) return;
    const bool isDone = operation(nullptr, [&] {
        const SavedState saved(context);
        context.setRoundLineCap();
        StitchPainter(design, rect, context, look).draw(run, showThread);
        return true;
    });
    static_cast<void>(isDone);  // a context that has no memory left tells its owner so
}

}  // namespace

void drawDesignInRectofContextshow3DshowJumpsshowStructureshowThread(const VLMDesign& design, const DesignRect& rect,
                                                                     GraphicsContext& context, bool show3D,
                                                                     bool showJumps, bool showStructure,
                                                                     std::int32_t showThread) noexcept {
    drawRun(design, rect, context, {show3D, showJumps, showStructure}, {.walk = {}, .end = design.stitches().size()},
            showThread);
}

void drawDesignInRectofContextshow3DshowJumpsshowStructure(const VLMDesign& design, const DesignRect& rect,
                                                           GraphicsContext& context, bool show3D, bool showJumps,
                                                           bool showStructure) noexcept {
    drawDesignInRectofContextshow3DshowJumpsshowStructureshowThread(design, rect, context, show3D, showJumps,
                                                                    showStructure, -1);
}

void DesignBlocks::Block::include(DesignPoint point) noexcept {
    if (!std::isfinite(point.x) || !std::isfinite(point.y)) return;
    least = {std::min(least.x, point.x), std::min(least.y, point.y)};
    most = {std::max(most.x, point.x), std::max(most.y, point.y)};
}

DesignBlocks::DesignBlocks(const VLMDesign& design) : design_(design) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const auto& stitches = design.stitches().all();
    blocks_.reserve(design.threads().size());
    for (NeedleWalk walk; walk.stitch() < stitches.size(); endStitch_ = walk.stitch()) {
        const NeedleWalk before = walk;
        const NeedleMove move = walk.take(stitches[walk.stitch()]);
        if (move.startsBlock) {
            if (blocks_.size() == design.threads().size()) return;
            blocks_.push_back({before, {infinity, infinity}, {-infinity, -infinity}});
            blocks_.back().include(move.start);
        }
        blocks_.back().include(move.end);
    }
}

DesignRect DesignBlocks::boundsOf(std::size_t block) const {
    const auto [x, y] = blocks_.at(block).least;
    const auto [right, top] = blocks_.at(block).most;
    return {x, y, right - x, top - y};
}

void DesignBlocks::drawBlockInRectofContext(std::size_t block, const DesignRect& rect,
                                            GraphicsContext& context) const noexcept {
    const Block& found = blocks_[block];
    const std::size_t end = block + 1 < blocks_.size() ? blocks_[block + 1].start.stitch() : endStitch_;
    drawRun(design_, rect, context, {}, {.walk = found.start, .end = end}, -1);
}

}  // namespace velamo
