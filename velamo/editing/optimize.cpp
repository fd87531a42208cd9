#include "velamo/editing/optimize.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "velamo/editing/optimized_stitches.h"
#include "velamo/model/failure.h"
#include "velamo/model/written_types.h"

namespace velamo {
namespace {

constexpr VLMStitch changeOnTheSpot(0, 0, false, true);

struct Move {
    float x;
    float y;
};

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

/// Whether the move is not finite or takes more pieces than a list may have, or so many that they could not even be
/// counted.
bool isTooLong(Move move, float limit, std::size_t mostPieces) noexcept {
    const float longest = std::max(std::abs(move.x), std::abs(move.y));
    return !std::isfinite(move.x) || !std::isfinite(move.y) || longest / limit > static_cast<float>(mostPieces);
}

bool isJumpOrChange(const VLMStitch& stitch) noexcept {
    return stitch.isJumpStitch() || stitch.isColorChange();
}

/// Follows the runs of jumps and colour changes of a list and tells whether they are merged already: a jump at most,
/// then changes on the spot. Zeros with a minus, which merging makes plain, count as not merged.
class RunCheck {
public:
    /// Takes the next stitch; false when it is not as merging leaves it.
    bool take(const VLMStitch& stitch) noexcept {
        const bool isFirst = !isInRun_;
        isInRun_ = isJumpOrChange(stitch);
        isAtJump_ = stitch.isJumpStitch();
        if (!isInRun_) return true;
        if (stitch.isColorChange()) return isPlainChange(stitch);
        return isFirst && !stitch.isNullStitch() && !isNegativeZero(stitch.deltaX()) &&
               !isNegativeZero(stitch.deltaY());
    }
    [[nodiscard]] bool isAtJump() const noexcept { return isAtJump_; }

private:
    static bool isNegativeZero(float number) noexcept { return number == 0 && std::signbit(number); }
    static bool isPlainChange(const VLMStitch& stitch) noexcept {
        return stitch == changeOnTheSpot && !isNegativeZero(stitch.deltaX()) && !isNegativeZero(stitch.deltaY());
    }

    bool isInRun_ = false;
    bool isAtJump_ = false;
};

/// Where the needle is, and the bounds of where it has been.
struct Track {
    float x = 0;
    float y = 0;
    float xMin = std::numeric_limits<float>::max();
    float yMin = std::numeric_limits<float>::max();
    float xMax = std::numeric_limits<float>::lowest();
    float yMax = std::numeric_limits<float>::lowest();

    void add(const VLMStitch& stitch) noexcept {
        x += stitch.deltaX();
        y += stitch.deltaY();
        xMin = std::min(xMin, x);
        yMin = std::min(yMin, y);
        xMax = std::max(xMax, x);
        yMax = std::max(yMax, y);
    }
};

/// Deselects the jumps and colour changes from the first selected stitch on. Whether there were any.
template <class Iterator>
bool trimFrom(Iterator first, Iterator end) noexcept {
    first = std::find_if(first, end, [](const VLMStitch& stitch) { return stitch.isSelected(); });
    const bool isTrimmed = first != end && isJumpOrChange(*first);
    for (; first != end && first->isSelected() && isJumpOrChange(*first); ++first) first->setIsSelected(false);
    return isTrimmed;
}

}  // namespace

OptimizedStitches::OptimizedStitches(std::string_view designType, std::size_t count, std::size_t mostStitches)
    : limits_(limitsOf(designType)), mostStitches_(mostStitches) {
    stitches_.reserve(count * 2);
}

OptimizedStitches::Limits OptimizedStitches::limitsOf(std::string_view designType) noexcept {
    constexpr float none = 999999;
    const WrittenType* type = writtenTypeNamed(designType);
    return type == nullptr ? Limits{none, none} : Limits{type->longestStitch, type->longestJump};
}

/// A run of jumps and colour changes becomes one move, then its colour changes on the spot.
void OptimizedStitches::merge(const VLMStitch& stitch) {
    if (isInRun_) {
        head_.setDeltaX(head_.deltaX() + stitch.deltaX());
        head_.setDeltaY(head_.deltaY() + stitch.deltaY());
        head_.setIsJumpStitch(head_.isJumpStitch() || stitch.isJumpStitch());
    } else {
        head_ = stitch;
        head_.setIsColorChange(false);
        colorChanges_ = 0;
        isInRun_ = true;
    }
    colorChanges_ += stitch.isColorChange();
}

void OptimizedStitches::endRun() {
    isInRun_ = false;
    if (!head_.isNullStitch()) put(head_);
    for (; colorChanges_ > 0; --colorChanges_) deliver(changeOnTheSpot);
}

/// What is cut off behind a jump is a jump, even where a stitch is cut: the needle is still up.
void OptimizedStitches::cut(VLMStitch rest) {
    const std::size_t room = mostStitches_ - std::min(mostStitches_, stitches_.size());
    while (!isRefused_) {
        const Move whole{rest.deltaX(), rest.deltaY()};
        const float limit = limitOf(rest);
        if (isWithin(limit, whole.x, whole.y)) return deliver(rest);
        const Move piece = firstPiece(whole, limit);
        const Move left{whole.x - piece.x, whole.y - piece.y};
        isRefused_ = isTooLong(whole, limit, room) || (left.x == whole.x && left.y == whole.y);
        const bool isRestJump = rest.isJumpStitch() || followsJump_;
        rest.setDeltaX(piece.x);
        rest.setDeltaY(piece.y);
        deliver(rest);
        rest = VLMStitch(left.x, left.y, isRestJump, false, rest.isSelected());
    }
}

bool OptimizedStitches::replaceStitchesOf(VLMDesign& design) {
    const bool leadsNowhere = isInRun_ && colorChanges_ == 0;  // a jump behind which nothing is sewn
    if (isInRun_ && !leadsNowhere) endRun();
    if (isRefused_) return false;
    design.stitches().all().swap(stitches_);
    keepThoseOf(design);
    return true;
}

bool OptimizedStitches::areThere(const StitchList& stitches, std::string_view designType) noexcept {
    const Limits limits = limitsOf(designType);
    RunCheck runs;
    for (const VLMStitch& stitch : stitches) {
        const float limit = stitch.isJumpStitch() ? limits.jump : limits.stitch;
        if (!isWithin(limit, stitch.deltaX(), stitch.deltaY()) || !runs.take(stitch)) return false;
    }
    return !runs.isAtJump();
}

/// The position is kept in single precision, as readers keep it.
void OptimizedStitches::keepThoseOf(VLMDesign& design) {
    Track track;
    for (const VLMStitch& stitch : std::as_const(design).stitches()) track.add(stitch);
    design.setXMin(track.xMin);
    design.setYMin(track.yMin);
    design.setXMax(track.xMax);
    design.setYMax(track.yMax);
    trimSelectedJumps(design);
    design.setDisplayRange({0, design.stitches().size()});
}

bool optimizeJumpsFor(VLMDesign& design, std::string_view designType) noexcept {
    return operation(nullptr, [&] {
        const auto& stitches = std::as_const(design).stitches();
        if (OptimizedStitches::areThere(stitches, designType)) {
            OptimizedStitches::keepThoseOf(design);
            return true;
        }
        OptimizedStitches optimized(designType, stitches.size());
        for (const VLMStitch& stitch : stitches) optimized.push_back(stitch);
        return optimized.replaceStitchesOf(design);
    });
}

bool trimSelectedJumps(VLMDesign& design) noexcept {
    if (std::as_const(design).stitches().empty()) return false;
    auto& stitches = design.stitches().all();
    const bool isStartTrimmed = trimFrom(stitches.begin(), stitches.end());
    const bool isEndTrimmed = trimFrom(stitches.rbegin(), stitches.rend());
    return isStartTrimmed || isEndTrimmed;
}

}  // namespace velamo
