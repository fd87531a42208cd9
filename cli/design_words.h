#pragma once

#include <iosfwd>

#include "cli/console.h"
#include "velamo/model/design.h"

namespace velamo {

/// Writes the design's description for a person, in lines and a piece at a time: as the design itself gives it, but a
/// number of stitches is never below zero, a thread without a name goes by its colour, what is absent is left out, the
/// figures have the digits of the user's locale, and each name stays on its line.
void writeInWords(std::ostream& out, const VLMDesign& design, const Console& console);

}  // namespace velamo
