#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

#include "model/design.h"

namespace velamo {

/// What a file's stitches do to the bounds that the design has already.
enum class SinkBounds { replace, widen };

/// Takes the stitches of a file as they are decoded: appends them to the design and widens its bounds by the running
/// position, which starts at the origin and is kept in single precision. Stitches are in the design for certain once
/// the sink is gone or was flushed.
class VLMStitchSink {
public:
    /// `mostStitches`: the number that the file's bytes can hold, for which room is made at once. More may come.
    VLMStitchSink(VLMDesign& design, std::size_t mostStitches, SinkBounds bounds = SinkBounds::replace)
        : design_(design) {
        if (bounds == SinkBounds::replace) design_.resetBounds();
        xMin_ = design_.xMin();
        yMin_ = design_.yMin();
        xMax_ = design_.xMax();
        yMax_ = design_.yMax();
        auto& stitches = design_.stitches().all();
        stitches.reserve(stitches.size() + mostStitches + blockSize_);
    }
    ~VLMStitchSink() { flushBlock(); }
    VLMStitchSink(const VLMStitchSink&) = delete;
    VLMStitchSink& operator=(const VLMStitchSink&) = delete;

    void append(float deltaX, float deltaY, bool isJump, bool isChange) {
        pending_[count_++] = VLMStitch::initWithDatadYisJumpisChange(deltaX, deltaY, isJump, isChange);
        x_ += deltaX;
        y_ += deltaY;
        xMin_ = std::min(xMin_, x_);
        xMax_ = std::max(xMax_, x_);
        yMin_ = std::min(yMin_, y_);
        yMax_ = std::max(yMax_, y_);
        if (count_ == pending_.size()) flush();
    }

    /// The design's last stitch, or null while it has none.
    [[nodiscard]] VLMStitch* last() noexcept {
        if (count_ > 0) return &pending_[count_ - 1];
        return design_.stitches().empty() ? nullptr : &design_.stitches().back();
    }

    void flush() {
        flushBlock();
        auto& stitches = design_.stitches().all();
        if (stitches.capacity() - stitches.size() < blockSize_) stitches.reserve(stitches.size() * 2 + blockSize_);
    }

private:
    static constexpr std::size_t blockSize_ = 256;

    /// There is always room for a block behind the stitches, so this needs no memory.
    void flushBlock() noexcept {
        auto& stitches = design_.stitches().all();
        stitches.insert(stitches.end(), pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(count_));
        count_ = 0;
        design_.setXMin(xMin_);
        design_.setXMax(xMax_);
        design_.setYMin(yMin_);
        design_.setYMax(yMax_);
    }

    VLMDesign& design_;
    // A block that stays in the processor's cache is filled first, and copied as a whole: several times faster than one
    // by one.
    std::array<VLMStitch, blockSize_> pending_;
    std::size_t count_ = 0;
    float x_ = 0;
    float y_ = 0;
    float xMin_ = 0;
    float yMin_ = 0;
    float xMax_ = 0;
    float yMax_ = 0;
};

}  // namespace velamo
