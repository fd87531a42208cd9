#pragma once

#include <string>

#include "velamo/private_api.h"

namespace velamo {

/// The text of a design's description, to be filled with fillPattern: name, type, version, width, height, the hoop
/// where it has one, and the numbers of stitches, jumps, colour changes and different colours. In the user's language.
[[nodiscard]] VELAMO_PRIVATE_API std::string descriptionPattern(bool withHoop);

}  // namespace velamo
