#pragma once

#include <string>
#include <string_view>

namespace velamo {

/// The text in UTF-8; half a surrogate pair becomes U+FFFD. May throw std::bad_alloc.
[[nodiscard]] std::string utf8FromUtf16(std::u16string_view text);

/// Puts a code point behind a UTF-8 text. Returns false and leaves the text as it is when there is no such code point.
[[nodiscard]] bool appendCodePoint(std::string& text, char32_t codePoint);

}  // namespace velamo
