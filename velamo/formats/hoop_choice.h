#pragma once

#include <span>
#include <string_view>

#include "velamo/model/design.h"
#include "velamo/model/failure.h"

namespace velamo {

/// Gives the design a hoop of the vendor to be written for: its own, when that is one, else the vendor's first that
/// takes the design. Returns false and leaves the design its hoop when there is none (error 63), when the design is
/// larger than its hoop (60) or lies partly outside of it (62), or when designs are not written for that hoop (51). The
/// formats word 60 and 51 in their own ways: `ownTexts` holds those two.
[[nodiscard]] bool chooseHoop(VLMDesign& design, std::string_view vendor, std::span<const ErrorText> ownTexts,
                              VLMError* error);

}  // namespace velamo
