#pragma once

#include <optional>
#include <string>

namespace velamo {

/// A text that may be absent, which is something else than empty. UTF-8.
using Text = std::optional<std::string>;

}  // namespace velamo
