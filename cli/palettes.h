#pragma once

#include "cli/console.h"

namespace velamo {

/// Lists the palettes of the resources by name, each with its colours in file order.
[[nodiscard]] ExitStatus palettes(const Console& console);

/// The same as a JSON list: "name", "displayName", "count" and "colors", each with "key", "name" and "color" (red,
/// green, blue from 0 to 1).
[[nodiscard]] ExitStatus palettesAsJson(const Console& console);

}  // namespace velamo
