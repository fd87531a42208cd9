#pragma once

#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include "velamo/model/design.h"

namespace velamo {

/// How tests show a stitch.
inline void PrintTo(const VLMStitch& stitch, std::ostream* out) {
    *out << stitch.description();
}

}  // namespace velamo

namespace velamo::test {

constexpr VLMStitch stitch(float deltaX, float deltaY) {
    return {deltaX, deltaY, false, false};
}
constexpr VLMStitch jump(float deltaX, float deltaY) {
    return {deltaX, deltaY, true, false};
}
constexpr VLMStitch change(float deltaX, float deltaY) {
    return {deltaX, deltaY, false, true};
}

inline VLMStitch selected(VLMStitch stitch) {
    stitch.setIsSelected(true);
    return stitch;
}

/// A design of the type "DST" with the stitches; the selection is active when one is selected. As many threads as
/// blocks, with the keys "1", "2", ...
inline VLMDesign designOf(std::vector<VLMStitch> stitches) {
    VLMDesign design;
    design.setDesignType("DST");
    std::size_t threads = 1;
    for (const VLMStitch& stitch : stitches) {
        threads += stitch.isColorChange();
        if (stitch.isSelected()) design.setSelectionActive(true);
    }
    design.setStitches(std::move(stitches));
    for (std::size_t i = 1; i <= threads; ++i)
        design.threads().push_back(VLMThread::initWithKeyofPalette(std::to_string(i), "Undefined"));
    return design;
}

using Bounds = std::vector<float>;
constexpr float largestFloat = std::numeric_limits<float>::max();
inline const Bounds noBounds{largestFloat, largestFloat, -largestFloat, -largestFloat};

/// xMin, yMin, xMax, yMax.
inline Bounds boundsOf(const VLMDesign& design) {
    return {design.xMin(), design.yMin(), design.xMax(), design.yMax()};
}

inline std::vector<Text> keysOf(const VLMDesign& design) {
    std::vector<Text> keys;
    for (const VLMThread& thread : design.threads()) keys.push_back(thread.key());
    return keys;
}
inline std::vector<std::int32_t> tensionsOf(const VLMDesign& design) {
    std::vector<std::int32_t> tensions;
    for (const VLMThread& thread : design.threads()) tensions.push_back(thread.tension());
    return tensions;
}

/// The keys "1" to "20", over and over.
inline std::vector<Text> numberedKeys(std::size_t count) {
    std::vector<Text> keys;
    for (std::size_t i = 0; i < count; ++i) keys.emplace_back(std::to_string(i % 20 + 1));
    return keys;
}

}  // namespace velamo::test
