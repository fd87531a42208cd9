#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
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

    void push_back(const VLMStitch& stitch) { push_back(stitch, stitch.deltaX(), stitch.deltaY()); }
    /// The stitch with another move. It is put together in its place in the list: elsewhere, and copied at once, it
    /// would have to wait until its parts have arrived in memory.
    void push_back(const VLMStitch& stitch, float deltaX, float deltaY) {
        if (stitch.isJumpStitch() || stitch.isColorChange()) return merge(moved(stitch, deltaX, deltaY));
        if (isInRun_) endRun();
        put(stitch, deltaX, deltaY);
    }

    /// Whether the stitches are optimised for the type already, as most that come from a file are.
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
    static constexpr std::size_t blockSize_ = 256;

    [[nodiscard]] static Limits limitsOf(std::string_view designType) noexcept;
    static void finish(VLMDesign& design, const Track& track);
    void merge(const VLMStitch& stitch);
    void endRun();
    void cut(VLMStitch rest);
    void flush();

    [[nodiscard]] float limitOf(const VLMStitch& stitch) const noexcept {
        return stitch.isJumpStitch() ? limits_.jump : limits_.stitch;
    }
    static bool isWithin(float limit, float deltaX, float deltaY) noexcept {
        return std::abs(deltaX) <= limit && std::abs(deltaY) <= limit;
    }
    static VLMStitch moved(VLMStitch stitch, float deltaX, float deltaY) noexcept {
        stitch.setDeltaX(deltaX);
        stitch.setDeltaY(deltaY);
        return stitch;
    }
    void put(const VLMStitch& stitch, float deltaX, float deltaY) {
        const bool isShort = isWithin(limitOf(stitch), deltaX, deltaY);
        isShort ? deliver(stitch, deltaX, deltaY) : cut(moved(stitch, deltaX, deltaY));
    }
    void deliver(const VLMStitch& stitch, float deltaX, float deltaY) {
        VLMStitch& place = pending_[pendingCount_++];
        place = stitch;
        place.setDeltaX(deltaX);
        place.setDeltaY(deltaY);
        followsJump_ = stitch.isJumpStitch();
        if (pendingCount_ == blockSize_) flush();
    }

    const Limits limits_;
    const std::size_t mostStitches_;
    // The run of jumps and colour changes that is being merged: its move so far, and its colour changes.
    VLMStitch head_;
    std::size_t colorChanges_ = 0;
    bool isInRun_ = false;

    bool isRefused_ = false;
    bool followsJump_ = false;
    std::size_t pendingCount_ = 0;
    // Filled while it stays in the processor's cache, then copied and measured as a whole.
    std::array<VLMStitch, blockSize_> pending_;
    std::vector<VLMStitch> stitches_;
    Track track_;
};

}  // namespace velamo
