#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace velamo {

/// A hash that nobody can make two different files for: who may put files beside others must not pass for them.
using Sha256 = std::array<std::byte, 32>;

[[nodiscard]] Sha256 sha256Of(std::span<const std::uint8_t> bytes) noexcept;

}  // namespace velamo
