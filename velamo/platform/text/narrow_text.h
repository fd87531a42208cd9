#pragma once

#include <string>
#include <string_view>

namespace velamo {

/// A text as bytes of one character each, for files that know no others. A character that does not fit becomes the
/// letters it is made of without their marks ("é" in ASCII: "e"; "ﬁ": "fi"), or a question mark where those do not fit
/// either; so does every byte that is no UTF-8. May throw std::bad_alloc.
[[nodiscard]] std::string asciiFromText(std::string_view text);
[[nodiscard]] std::string latin1FromText(std::string_view text);

}  // namespace velamo
