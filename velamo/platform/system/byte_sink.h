#pragma once

#include <cstdint>
#include <functional>
#include <span>

namespace velamo {

/// Takes the next bytes of something that is made piece by piece; they are valid during the call. Returns false when it
/// cannot keep them, and is then not called again.
using ByteSink = std::function<bool(std::span<const std::uint8_t>)>;

}  // namespace velamo
