#include "velamo/analysis/sewing_figures.h"

#include <cmath>

#include "velamo/model/needle_walk.h"

namespace velamo {
namespace {

/// The squares of singles fit into a double; std::hypot, which takes care that they do, takes ten times as long.
double lengthOf(const VLMStitch& stitch) noexcept {
    const double x = stitch.deltaX();
    const double y = stitch.deltaY();
    const double length = std::sqrt(x * x + y * y);
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
            addStitch(stitch, move.isSewn);
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
    void addStitch(const VLMStitch& stitch, bool isSewn) {
        if (jumpsInRow_ >= jumpsOfTrim && block_.stitches > 0) ++figures_.trims;
        jumpsInRow_ = 0;
        ++block_.stitches;
        if (!isSewn) return;
        const double length = lengthOf(stitch);
        block_.sewnLength += length;
        figures_.sewnLength += length;
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
