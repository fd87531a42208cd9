#include "velamo/analysis/sewing_figures.h"

#include <cmath>

#include "velamo/model/needle_walk.h"

namespace velamo {
namespace {

double lengthOf(const NeedleMove& move) noexcept {
    const double length = std::hypot(move.end.x - move.start.x, move.end.y - move.start.y);
    return std::isfinite(length) ? length : 0;
}

/// Counts what happens from one colour change to the next.
class FigureCounter {
public:
    void take(const VLMStitch& stitch) {
        const NeedleMove move = walk_.take(stitch);
        if (move.startsBlock) beginBlock(move.thread);
        if (stitch.isColorChange()) return;
        if (stitch.isJumpStitch()) {
            ++figures_.jumps;
            ++jumpsInRow_;
        } else {
            addStitch(move);
        }
    }
    [[nodiscard]] SewingFigures take() && {
        endBlock();
        return std::move(figures_);
    }

private:
    void beginBlock(std::size_t thread) {
        endBlock();
        block_ = {.thread = thread};
        jumpsInRow_ = 0;
    }
    void endBlock() {
        if (block_.stitches > 0) figures_.blocks.push_back(block_);
    }
    void addStitch(const NeedleMove& move) {
        if (jumpsInRow_ >= jumpsOfTrim && block_.stitches > 0) ++figures_.trims;
        jumpsInRow_ = 0;
        ++block_.stitches;
        if (!move.isSewn) return;
        block_.sewnLength += lengthOf(move);
        figures_.sewnLength += lengthOf(move);
    }

    NeedleWalk walk_;
    SewingFigures figures_;
    BlockFigures block_;
    std::int64_t jumpsInRow_ = 0;
};

}  // namespace

SewingFigures sewingFiguresOf(const VLMDesign& design) {
    FigureCounter counter;
    for (const VLMStitch& stitch : design.stitches()) counter.take(stitch);
    return std::move(counter).take();
}

}  // namespace velamo
