#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace velamo {

/// The red, green and blue (0 to 1, unless the colour lies outside the screen's range) of a colour object as Apple's
/// non-keyed archiver wrote it; grey for a colour in the white space. The archive is a stream of typed values:
///   byte            meaning
///   0x84            new: a shared text, an object or a class follows; the next number refers to it from then on
///   0x92 and up     the shared text, or the object or class, number 0 and up
///   0x85            no object, or the end of a class's line of ancestors
///   0x86            end of an object
///   0x81 0x82 0x83  a number of 2 bytes, of 4 bytes, or a real one follows
///   others          a small signed number
/// Returns nullopt when the archive is damaged or cut off, of another class, of a colour space that is neither RGB nor
/// white, or not finite.
[[nodiscard]] std::optional<std::array<double, 3>> colorFromOldArchive(std::span<const std::uint8_t> data) noexcept;

}  // namespace velamo
