#pragma once

#include <span>
#include <string>

#include "velamo/model/design.h"

namespace velamo {

/// What a design is, and what becomes of it in a file.
struct Comparison {
    std::span<const VLMThread> wanted;  // the design's threads before it was written
    const VLMDesign& written;           // its moves, as they were fitted to the format
    const VLMDesign& readBack;          // the design that the file holds
    std::span<const VLMThread> found;   // its threads, or those of the side file that it has
};

/// What a person who reads the file again would miss, in words that continue "written ...": colors, threads, the
/// last stitches; and threads that they would find besides. Empty where that is nothing: colors that the design itself
/// did not know, how moves are cut, and roundings of a file's numbers are not told.
[[nodiscard]] std::string lossOf(const Comparison& comparison);

}  // namespace velamo
