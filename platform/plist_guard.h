#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace velamo {

/// libplist builds whatever a file describes, and builds and frees it by recursion. A hostile file can make that
/// overflow the stack (by nesting), fill the memory (a binary list may refer to one array many times, so that a few
/// hundred bytes stand for gigabytes), or take hours (dictionaries of very many keys). These look at a file before
/// libplist does, without building anything.
///
/// False when a list nests deeper than 64 levels or has a dictionary of more than 65,536 keys, and for a binary list
/// also when its tables are damaged, it leads in circles or unfolds to more than its size allows, for an XML text when
/// it declares things of its own. True says nothing of whether the list can be read.
[[nodiscard]] bool isSafeBinaryPlist(std::span<const std::uint8_t> bytes);
[[nodiscard]] bool isSafeXmlPlist(std::string_view xml) noexcept;

}  // namespace velamo
