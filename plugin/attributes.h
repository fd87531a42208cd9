#pragma once

#include <array>

#include "plugin/owned.h"

namespace velamo {

inline constexpr std::size_t numberOfAttributes = 4;

/// The keys under which the indexer knows a design's width and height in millimetres and its numbers of stitches and of
/// different colours, in the order in which they are stored. May throw std::bad_alloc.
inline std::array<CFStringRef, numberOfAttributes> attributeKeys() {
    return {required(CFSTR("de_velamo_embroidery_width")), required(CFSTR("de_velamo_embroidery_height")),
            required(CFSTR("de_velamo_embroidery_stitches")), required(CFSTR("de_velamo_embroidery_colors"))};
}

/// Their values, in the same order.
using AttributeValues = std::array<Float32, numberOfAttributes>;

}  // namespace velamo
