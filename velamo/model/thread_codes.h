#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace velamo {

/// Machine files store small numbers for threads. These tables tell which key of a palette such a number stands for;
/// nothing is built for a look-up, in either direction. VLMDesign hands them out whole.

/// The key in the palette "Janome" of the index in a JEF, JPX or SEW file (0 to 78), or nullopt for another index.
[[nodiscard]] std::optional<std::string_view> janomeCodeOfIndex(std::int64_t index) noexcept;
/// The index of the key, which is unique, or nullopt for a key that Janome machines do not know.
[[nodiscard]] std::optional<std::int32_t> janomeIndexOfCode(std::string_view code) noexcept;

/// The key in the palette "Brother" of the index in a PEC section: 1 to 64, and seven aliases beyond that some files
/// carry.
[[nodiscard]] std::optional<std::string_view> brotherCodeOfIndex(std::int64_t index) noexcept;
/// The index that is written for the key, 1 to 64, never an alias, or nullopt for a key that Brother machines do not
/// know.
[[nodiscard]] std::optional<std::int32_t> brotherIndexOfCode(std::string_view code) noexcept;

}  // namespace velamo
