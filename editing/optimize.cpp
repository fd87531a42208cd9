#include "editing/optimize.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

#include "editing/edit_error.h"
#include "editing/replace_stitches.h"

namespace velamo {
namespace {

/// The longest move that a record of a design type holds, on either axis.
struct Limits {
    std::string_view designType;
    float stitch;
    float jump;
};
constexpr std::array<Limits, 6> limitsOfTypes{{
    {"JEF", 126, 126},
    {"PES", 62, 2046},
    {"PEC", 62, 2046},
    {"EXP", 126, 126},
    {"DST", 120, 120},
    {"PCS", 1150, 1150},
}};
constexpr Limits otherLimits{{}, 999999, 999999};

/// Far above any real design; a hostile file's moves could be cut into billions of pieces.
constexpr std::size_t mostStitches = std::size_t{1} << 26;

Limits limitsOf(std::string_view designType) noexcept {
    for (const Limits& limits : limitsOfTypes)
        if (limits.designType == designType) return limits;
    return otherLimits;
}

bool isJumpOrChange(const VLMStitch& stitch) noexcept {
    return stitch.isJumpStitch() || stitch.isColorChange();
}

struct Move {
    float x;
    float y;
};

bool isWithin(Move move, float limit) noexcept {
    return std::abs(move.x) <= limit && std::abs(move.y) <= limit;
}

/// The first piece of a move that is too long: in its direction, the longer axis exactly at the limit.
Move firstPiece(Move whole, float limit) noexcept {
    Move piece = whole;
    if (std::abs(whole.x) > limit) {
        piece.x = std::copysign(limit, whole.x);
        piece.y = (whole.y / whole.x) * piece.x;
    }
    if (std::abs(piece.y) > limit) {
        piece.y = std::copysign(limit, piece.y);
        piece.x = (whole.x / whole.y) * piece.y;
    }
    return piece;
}

/// Gives the stitches of the optimised list to `take`, in order, which says whether it wants more.
template <class Take>
class Optimizer {
public:
    Optimizer(Limits limits, Take take) : limits_(limits), take_(std::move(take)) {}

    /// False when a move cannot be cut, or `take` wanted no more.
    bool run(std::span<const VLMStitch> stitches) {
        for (std::size_t i = 0; i < stitches.size();) {
            if (!isJumpOrChange(stitches[i])) {
                if (!put(stitches[i++])) return false;
                continue;
            }
            std::size_t end = i + 1;
            while (end < stitches.size() && isJumpOrChange(stitches[end])) ++end;
            if (!merge(stitches.subspan(i, end - i), end == stitches.size())) return false;
            i = end;
        }
        return true;
    }

private:
    /// A run of jumps and colour changes: one move, then its colour changes on the spot.
    bool merge(std::span<const VLMStitch> run, bool isLast) {
        VLMStitch head = run.front();
        std::size_t colorChanges = head.isColorChange();
        head.setIsColorChange(false);
        for (const VLMStitch& next : run.subspan(1)) {
            head.setDeltaX(head.deltaX() + next.deltaX());
            head.setDeltaY(head.deltaY() + next.deltaY());
            head.setIsJumpStitch(head.isJumpStitch() || next.isJumpStitch());
            colorChanges += next.isColorChange();
        }
        const bool leadsNowhere = isLast && colorChanges == 0;  // then it is a jump: nothing is sewn behind it
        if (!head.isNullStitch() && !leadsNowhere && !put(head)) return false;
        const auto change = VLMStitch::initWithDatadYisJumpisChange(0, 0, false, true);
        for (; colorChanges > 0; --colorChanges)
            if (!put(change)) return false;
        return true;
    }

    bool put(const VLMStitch& stitch) {
        const Move move{stitch.deltaX(), stitch.deltaY()};
        if (isWithin(move, limitOf(stitch))) return deliver(stitch);
        return std::isfinite(move.x) && std::isfinite(move.y) && cut(stitch);
    }

    /// What is cut off behind a jump is a jump, even where a stitch is cut: the needle is still up.
    bool cut(VLMStitch rest) {
        for (;;) {
            const Move whole{rest.deltaX(), rest.deltaY()};
            const float limit = limitOf(rest);
            if (isWithin(whole, limit)) return deliver(rest);
            const Move piece = firstPiece(whole, limit);
            const Move left{whole.x - piece.x, whole.y - piece.y};
            if (left.x == whole.x && left.y == whole.y) return false;
            VLMStitch first = rest;
            first.setDeltaX(piece.x);
            first.setDeltaY(piece.y);
            rest.setDeltaX(left.x);
            rest.setDeltaY(left.y);
            rest.setIsJumpStitch(rest.isJumpStitch() || followsJump_);
            if (!deliver(first)) return false;
        }
    }

    bool deliver(const VLMStitch& stitch) {
        followsJump_ = stitch.isJumpStitch();
        return take_(stitch);
    }

    [[nodiscard]] float limitOf(const VLMStitch& stitch) const noexcept {
        return stitch.isJumpStitch() ? limits_.jump : limits_.stitch;
    }

    Limits limits_;
    Take take_;
    bool followsJump_ = false;
};

/// The number of stitches that the list comes to; nothing when it cannot be optimised.
std::optional<std::size_t> countOptimized(std::span<const VLMStitch> stitches, Limits limits) {
    std::size_t count = 0;
    Optimizer counter(limits, [&count](const VLMStitch&) { return ++count <= mostStitches; });
    return counter.run(stitches) ? std::optional(count) : std::nullopt;
}

/// The bounds of the places after each stitch, the position being kept in single precision.
void measure(VLMDesign& design) noexcept {
    design.resetBounds();
    Move position{0, 0};
    Move least{design.xMin(), design.yMin()};
    Move greatest{design.xMax(), design.yMax()};
    for (const VLMStitch& stitch : std::as_const(design).stitches()) {
        position = {position.x + stitch.deltaX(), position.y + stitch.deltaY()};
        least = {std::min(least.x, position.x), std::min(least.y, position.y)};
        greatest = {std::max(greatest.x, position.x), std::max(greatest.y, position.y)};
    }
    design.setXMin(least.x);
    design.setYMin(least.y);
    design.setXMax(greatest.x);
    design.setYMax(greatest.y);
}

/// Deselects the jumps and colour changes from the first selected stitch on. Whether there were any.
template <class Iterator>
bool trimFrom(Iterator first, Iterator end) noexcept {
    first = std::find_if(first, end, [](const VLMStitch& stitch) { return stitch.isSelected(); });
    const bool isTrimmed = first != end && isJumpOrChange(*first);
    for (; first != end && first->isSelected() && isJumpOrChange(*first); ++first) first->setIsSelected(false);
    return isTrimmed;
}

}  // namespace

bool replaceStitches(VLMDesign& design, std::span<const VLMStitch> stitches, std::string_view designType) {
    const Limits limits = limitsOf(designType);
    const auto count = countOptimized(stitches, limits);
    if (!count) return false;
    std::vector<VLMStitch> optimized;
    optimized.reserve(*count);
    Optimizer writer(limits, [&optimized](const VLMStitch& stitch) {
        optimized.push_back(stitch);
        return true;
    });
    writer.run(stitches);
    design.stitches().all() = std::move(optimized);
    measure(design);
    trimSelectedJumps(design);
    design.setDisplayRange({0, design.stitches().size()});
    return true;
}

bool finishEdit(VLMDesign& design, std::span<const VLMStitch> stitches, VLMError* error) {
    const std::string designType = design.designType().value_or("");
    return replaceStitches(design, stitches, designType) || failEdit(EditFailure::movesTooLarge, error);
}

bool optimizeJumpsFor(VLMDesign& design, std::string_view designType) noexcept {
    return operation(nullptr, [&] { return replaceStitches(design, design.stitches().all(), designType); });
}

bool trimSelectedJumps(VLMDesign& design) noexcept {
    const VLMStitchList& list = std::as_const(design).stitches();
    if (list.empty()) return false;
    auto& stitches = design.stitches().all();
    const bool isStartTrimmed = trimFrom(stitches.begin(), stitches.end());
    const bool isEndTrimmed = trimFrom(stitches.rbegin(), stitches.rend());
    return isStartTrimmed || isEndTrimmed;
}

}  // namespace velamo
