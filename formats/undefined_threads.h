#pragma once

#include "model/design.h"

namespace velamo {

/// Appends the thread of the next colour block to a design whose file carries no colours: the keys "1" to "20", over
/// and over, of the palette "Undefined", which has no colours of its own.
void appendUndefinedThread(VLMDesign& design);

}  // namespace velamo
