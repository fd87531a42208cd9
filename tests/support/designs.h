#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/support/stitches.h"
#include "velamo/editing/optimize.h"
#include "velamo/model/design.h"

namespace velamo::test {

/// A thread of a palette's key.
inline VLMThread threadOf(const std::string& key, const std::string& palette = "Brother") {
    return VLMThread::initWithKeyofPalette(key, palette);
}

/// Widens the reset bounds by every place that the needle comes to.
inline void measure(VLMDesign& design) {
    design.resetBounds();
    float x = 0;
    float y = 0;
    for (const VLMStitch& stitch : design.stitches()) {
        x += stitch.deltaX();
        y += stitch.deltaY();
        design.setXMin(std::min(design.xMin(), x));
        design.setYMin(std::min(design.yMin(), y));
        design.setXMax(std::max(design.xMax(), x));
        design.setYMax(std::max(design.yMax(), y));
    }
}

/// A design of the stitches as they stand, with its bounds and so many threads of the Brother palette.
inline VLMDesign sewn(std::vector<VLMStitch> stitches, std::size_t threads = 1) {
    VLMDesign design;
    design.setStitches(std::move(stitches));
    for (std::size_t i = 0; i < threads; ++i) design.threads().push_back(threadOf("800"));
    measure(design);
    return design;
}

/// A number that no writer can make whole, and numbers that none has bytes for.
inline const std::vector<float> awkwardNumbers{std::numeric_limits<float>::quiet_NaN(),
                                               std::numeric_limits<float>::infinity(),
                                               -std::numeric_limits<float>::infinity(),
                                               largestFloat,
                                               -largestFloat,
                                               1e20F,
                                               -1e10F,
                                               3e9F};

/// A design with such numbers in its stitches or in its bounds.
inline std::vector<VLMDesign> awkwardDesigns() {
    std::vector<VLMDesign> designs;
    for (const float number : awkwardNumbers) {
        const std::vector<VLMStitch> stitches{
            stitch(number, 1), jump(1, number), {number, number, true, true}, stitch(-5, 5)};
        designs.push_back(sewn(stitches, 2));
        designs.push_back(sewn(stitches, 2));
        designs.back().setXMin(-10);
        designs.back().setXMax(10);
        designs.back().setYMin(-10);
        designs.back().setYMax(10);
        designs.push_back(sewn({stitch(1, 1)}));
        designs.back().setXMin(number);
        designs.back().setYMax(number);
    }
    designs.push_back(sewn({}));
    return designs;
}

}  // namespace velamo::test
