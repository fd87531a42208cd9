#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <vector>

#include "model/design.h"

namespace velamo {

/// Makes the list that optimizeJumpsFor is about from stitches that come one after the other. An edit sends its
/// stitches straight in here, so that it needs no list of its own.
class OptimizedStitches {
public:
    /// Makes room for twice as many stitches; what is not used of it takes no memory, as it is never touched.
    OptimizedStitches(std::string_view designType, std::size_t count);
    OptimizedStitches(const OptimizedStitches&) = delete;
    OptimizedStitches& operator=(const OptimizedStitches&) = delete;
    ~OptimizedStitches() = default;

    void push_back(const VLMStitch& stitch) {
        if (stitch.isJumpStitch() || stitch.isColorChange()) return merge(stitch);
        if (isInRun_) endRun();
        put(stitch);
    }

    /// After the last stitch: gives the design the list and its bounds, unless a move could not be cut or there were
    /// too many pieces. Then it gives false, and the design is unchanged.
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
        float xMin;
        float yMin;
        float xMax;
        float yMax;
    };
    static constexpr std::size_t blockSize_ = 256;

    [[nodiscard]] static Limits limitsOf(std::string_view designType) noexcept;
    void merge(const VLMStitch& stitch);
    void endRun();
    void cut(VLMStitch rest);
    void flush();

    [[nodiscard]] float limitOf(const VLMStitch& stitch) const noexcept {
        return stitch.isJumpStitch() ? limits_.jump : limits_.stitch;
    }
    void put(const VLMStitch& stitch) {
        const float limit = limitOf(stitch);
        const bool isShort = std::abs(stitch.deltaX()) <= limit && std::abs(stitch.deltaY()) <= limit;
        isShort ? deliver(stitch) : cut(stitch);
    }
    void deliver(const VLMStitch& stitch) {
        pending_[pendingCount_++] = stitch;
        followsJump_ = stitch.isJumpStitch();
        if (pendingCount_ == blockSize_) flush();
    }

    const Limits limits_;
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
