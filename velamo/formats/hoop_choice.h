#pragma once

#include <span>
#include <string_view>

#include "velamo/model/design.h"
#include "velamo/model/failure.h"

namespace velamo {

/// Gives the design a hoop of the vendor to be written for: its own, when that is one, else the vendor's first that
/// takes the design. False, with the hoop that it had, when there is none (63), the design is larger than its hoop
/// (60), lies partly outside of it (62) or the hoop is none to write for (51). The formats word 60 and 51 in their own
/// ways: `ownTexts` holds those two.
[[nodiscard]] bool chooseHoop(VLMDesign& design, std::string_view vendor, std::span<const ErrorText> ownTexts,
                              VLMError* error);

}  // namespace velamo
