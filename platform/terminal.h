#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/user.h"

namespace velamo {

enum class StandardStream : std::uint8_t { output, error };

/// Whether a person reads the stream directly.
[[nodiscard]] bool isTerminal(StandardStream stream) noexcept;

/// How a terminal can show a picture: not at all, as blocks of 256 or of all colours, or as what the sixel or the kitty
/// protocol describes.
enum class TerminalPictures : std::uint8_t { none, blocksOf256Colors, blocksOfAllColors, sixel, kitty };

/// What the terminal announces in the environment. A program that divides the terminal's window passes blocks alone.
[[nodiscard]] TerminalPictures announcedPictures(const Environment& environment = processEnvironment);

/// The characters that stand side by side, and the lines below one another; 80 by 24 where the stream is no terminal or
/// does not tell.
struct TerminalSize {
    int columns = 80;
    int lines = 24;
};
[[nodiscard]] TerminalSize terminalSize(StandardStream stream) noexcept;

/// A name, or another text that is to stay on its line, with whatever a terminal would obey rather than show (control
/// characters, marks that turn the direction of writing, and bytes that are no UTF-8) written as "\n", "\t" or "\x1b",
/// and a backslash doubled, so that it can be told apart.
[[nodiscard]] std::string escapedForTerminal(std::string_view text);

/// What a terminal takes the bytes of a character for, as the user's locale tells: one that takes each for a character
/// of its own obeys the second byte of "Ś" as it would a control character.
enum class TerminalEncoding : std::uint8_t { utf8, bytes };
[[nodiscard]] TerminalEncoding terminalEncoding() noexcept;

/// The same for text of many lines: line ends stay, and backslashes are not doubled.
[[nodiscard]] std::string linesForTerminal(std::string_view text, TerminalEncoding encoding = TerminalEncoding::utf8);

/// JSON that means the same and in which what a terminal would obey (control characters from U+007F on, marks that turn
/// the direction of writing, line and paragraph separators) is written as "\u009b" and its like.
[[nodiscard]] std::string harmlessJson(std::string_view json);

/// Takes the system's own messages from the user's language. Once, before other threads start.
void adoptUserLanguage() noexcept;

}  // namespace velamo
