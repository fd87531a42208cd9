#pragma once

#include <string>
#include <string_view>

#include "velamo/platform/system/terminal.h"
#include "velamo/private_api.h"

namespace velamo {

/// A name, or another text that is to stay on its line, with whatever a terminal would obey rather than show (control
/// characters, marks that turn the direction of writing, and bytes that are no UTF-8) written as "\n", "\t" or "\x1b",
/// and a backslash doubled, so that it can be told apart.
[[nodiscard]] VELAMO_PRIVATE_API std::string escapedForTerminal(std::string_view text);

/// The same for text of many lines: line ends stay, and backslashes are not doubled.
[[nodiscard]] VELAMO_PRIVATE_API std::string linesForTerminal(std::string_view text,
                                                              TerminalEncoding encoding = TerminalEncoding::utf8);

/// JSON that means the same and in which what a terminal would obey (control characters from U+007F on, marks that turn
/// the direction of writing, line and paragraph separators) is written as "\u009b" and its like.
[[nodiscard]] VELAMO_PRIVATE_API std::string harmlessJson(std::string_view json);

}  // namespace velamo
