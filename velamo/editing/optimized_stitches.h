#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <vector>

#include "velamo/model/design.h"

namespace velamo {

/// Makes the list that optimizeJumpsFor is about from stitches that come one after the other. An edit sends its
/// stitches straight in here, so that it needs no list of its own.
class OptimizedStitches {
public:
    /// So many stitches may become of `count`. That is far above any real design: four times as long as a machine
    /// sews, each of the first million, and kilometres besides. A hostile file's moves could be cut into billions of
    /// pieces.
    [[nodiscard]] static constexpr std::size_t mostOf(std::size_t count) noexcept {
        constexpr std::size_t furtherPieces = 3;
        constexpr std::size_t mostFurther = std::size_t{3} << 20;
        constexpr std::size_t besides = std::size_t{1} << 19;
        return count + std::min(furtherPieces * count, mostFurther) + besides;
    }

    /// Makes room for twice as many stitches as `count`; what is not used of it takes no memory, as it is never
    /// touched.
    OptimizedStitches(std::string_view designType, std::size_t count)
        : OptimizedStitches(designType, count, mostOf(count)) {}
    OptimizedStitches(std::string_view designType, std::size_t count, std::size_t mostStitches);
    OptimizedStitches(const OptimizedStitches&) = delete;
    OptimizedStitches& operator=(const OptimizedStitches&) = delete;
    ~OptimizedStitches() = default;

    void push_back(const VLMStitch& stitch) {
        if (stitch.isJumpStitch() || stitch.isColorChange()) return merge(stitch);
        if (isInRun_) endRun();
        put(stitch);
    }

    /// Whether the stitches are optimised for the type already, as most that come from a file are: to find that out,
    /// and make no list, takes a quarter of the time.
    [[nodiscard]] static bool areThere(const StitchList& stitches, std::string_view designType) noexcept;
    /// For those that are: brings the design's bounds and what goes with them up to date, which takes no memory.
    static void keepThoseOf(VLMDesign& design);

    /// After the last stitch: gives the design the list and its bounds, unless a move could not be cut or there were
    /// too many pieces. In that case it returns false and leaves the design unchanged.
    [[nodiscard]] bool replaceStitchesOf(VLMDesign& design);

private:
    /// The longest move that a record holds, on either axis.
    struct Limits {
        float stitch;
        float jump;
    };

    [[nodiscard]] static Limits limitsOf(std::string_view designType) noexcept;
    void merge(const VLMStitch& stitch);
    void endRun();
    void cut(VLMStitch rest);

    [[nodiscard]] float limitOf(const VLMStitch& stitch) const noexcept {
        return stitch.isJumpStitch() ? limits_.jump : limits_.stitch;
    }
    static bool isWithin(float limit, float deltaX, float deltaY) noexcept {
        return std::abs(deltaX) <= limit && std::abs(deltaY) <= limit;
    }
    void put(const VLMStitch& stitch) {
        const bool isShort = isWithin(limitOf(stitch), stitch.deltaX(), stitch.deltaY());
        isShort ? deliver(stitch) : cut(stitch);
    }
    void deliver(const VLMStitch& stitch) {
        followsJump_ = stitch.isJumpStitch();
        isRefused_ = isRefused_ || stitches_.size() >= mostStitches_;
        if (!isRefused_) stitches_.push_back(stitch);
    }

    const Limits limits_;
    const std::size_t mostStitches_;
    // The run of jumps and colour changes that is being merged: its move so far, and its colour changes.
    VLMStitch head_;
    std::size_t colorChanges_ = 0;
    bool isInRun_ = false;

    bool isRefused_ = false;
    bool followsJump_ = false;
    std::vector<VLMStitch> stitches_;
};

}  // namespace velamo
