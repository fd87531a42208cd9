#pragma once

#include <cstdint>
#include <functional>
#include <span>

namespace velamo {

/// Takes the next bytes of something that is made piece by piece. False when they cannot be kept: nothing more is
/// wanted then.
using ByteSink = std::function<bool(std::span<const std::uint8_t>)>;

}  // namespace velamo
