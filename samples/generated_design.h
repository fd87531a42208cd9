#pragma once

#include <cstdint>

#include "velamo/model/design.h"

namespace velamo {

/// A design such as people have them: fillings, satin columns, running outlines, petals and lettering, in one or more
/// colours, 10 to 250 mm wide, of some dozens to some ten thousand stitches. The seed decides all of it, on every
/// machine alike but for the last bits of sines. Every tenth seed gives a design in one of a few frames, which it
/// shares, stitch by stitch, with all others in that frame.
[[nodiscard]] VLMDesign generatedDesign(std::uint64_t seed);

}  // namespace velamo
