#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

#include "model/design.h"

namespace velamo {

/// Takes the stitches of a file as they are decoded: appends them to the design and widens its bounds by the running
/// position, which starts at the origin and is kept in single precision. Stitches are in the design for certain once
/// the sink is gone or was flushed.
class VLMStitchSink {
public:
    /// `mostStitches`: the number that the file's bytes can hold, for which room is made at once.
    VLMStitchSink(VLMDesign& design, std::size_t mostStitches) : design_(design) {
        design_.resetBounds();
        design_.stitches().all().reserve(design_.stitches().size() + mostStitches);
    }
    ~VLMStitchSink() { flush(); }
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

    void flush() {
        auto& stitches = design_.stitches().all();
        stitches.insert(stitches.end(), pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(count_));
        count_ = 0;
        design_.setXMin(xMin_);
        design_.setXMax(xMax_);
        design_.setYMin(yMin_);
        design_.setYMax(yMax_);
    }

private:
    static constexpr float largest_ = std::numeric_limits<float>::max();

    VLMDesign& design_;
    // A block that stays in the processor's cache is filled first, and copied as a whole: several times faster than one
    // by one.
    std::array<VLMStitch, 256> pending_;
    std::size_t count_ = 0;
    float x_ = 0;
    float y_ = 0;
    float xMin_ = largest_;
    float yMin_ = largest_;
    float xMax_ = -largest_;
    float yMax_ = -largest_;
};

}  // namespace velamo
