#pragma once

#include <optional>
#include <string>

#include "cli/console.h"

namespace velamo {

/// Lists the hoops in the order of the catalogue, or those of one vendor.
[[nodiscard]] ExitStatus hoops(const std::optional<std::string>& vendor, const Console& console);

/// The same as a JSON list of hoop objects, as in a dump.
[[nodiscard]] ExitStatus hoopsAsJson(const std::optional<std::string>& vendor, const Console& console);

}  // namespace velamo
