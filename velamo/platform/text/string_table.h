#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "velamo/private_api.h"

namespace velamo {

/// A table of texts by key, read from a ".strings" file: `"key" = "text";` with /* */ and // comments, UTF-8.
using StringTable = std::map<std::string, std::string, std::less<>>;

/// The entries of a ".strings" text up to its end or its first damaged entry. Knows the escapes \" \\ \n \t \r and
/// \Uxxxx (a UTF-16 unit; two make a character beyond the first plane); a backslash before anything else is dropped. Of
/// two entries with one key the later counts. Bytes that are no UTF-8 become U+FFFD.
[[nodiscard]] VELAMO_PRIVATE_API StringTable parseStringTable(std::string_view text);

}  // namespace velamo
