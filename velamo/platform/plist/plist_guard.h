#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace velamo {

/// libplist builds whatever a file describes, and frees it by recursion. A hostile file can make that overflow the
/// stack (by nesting), fill the memory (a binary list may name one array many times, so that a few hundred bytes stand
/// for gigabytes), stop the program (a NUL in a key), or take hours (repeated keys and character references, whose time
/// grows with the square of their number). These look at a file before libplist does, without building anything.
///
/// Both return false when libplist must not be given the list: it nests deeper than 64 levels; it is binary and its
/// tables are damaged, it leads in circles, unfolds to more than its size allows, has a key that is no text or a text
/// with a NUL; or it is XML and has declarations of its own, a reference to a character unknown in XML, a NUL, or a
/// dictionary or text so large that reading it takes more time than its size allows (10,000 keys or character
/// references are no matter). True says nothing of whether the list can be read.
[[nodiscard]] bool isSafeBinaryPlist(std::span<const std::uint8_t> bytes) noexcept;
[[nodiscard]] bool isSafeXmlPlist(std::string_view xml) noexcept;

}  // namespace velamo
