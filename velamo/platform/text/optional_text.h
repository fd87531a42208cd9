#pragma once

#include <optional>
#include <string>

namespace velamo {

/// A UTF-8 text that may be absent, which is not the same as empty.
using Text = std::optional<std::string>;

}  // namespace velamo
