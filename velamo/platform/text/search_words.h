#pragma once

#include <string>
#include <string_view>

#include "velamo/private_api.h"

namespace velamo {

/// The text without differences of case, of composed and decomposed letters, and of width, by which file systems may
/// take names for the same. Bytes that are no UTF-8 become U+FFFD. May throw std::bad_alloc.
[[nodiscard]] VELAMO_PRIVATE_API std::string foldedName(std::string_view text);

/// The same without the accents of Latin, Greek and Cyrillic letters besides: texts that a person takes for the same
/// are the same. May throw std::bad_alloc.
[[nodiscard]] VELAMO_PRIVATE_API std::string foldedForSearch(std::string_view text);

/// How many columns the text takes up on a terminal.
[[nodiscard]] VELAMO_PRIVATE_API std::size_t columnsOf(std::string_view text);

}  // namespace velamo
