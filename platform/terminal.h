#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace velamo {

enum class StandardStream : std::uint8_t { output, error };

/// Whether a person reads the stream directly.
[[nodiscard]] bool isTerminal(StandardStream stream) noexcept;

/// The text with whatever a terminal would obey rather than show (control characters, and bytes that are no UTF-8)
/// written as "\n", "\t" or "\x1b", and a backslash doubled, so that it can be told apart.
[[nodiscard]] std::string escapedForTerminal(std::string_view text);

/// Takes the system's own messages from the user's language. Once, before other threads start.
void adoptUserLanguage() noexcept;

}  // namespace velamo
