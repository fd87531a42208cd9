#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "velamo/platform/system/user.h"
#include "velamo/private_api.h"

namespace velamo {

enum class StandardStream : std::uint8_t { output, error };

/// Whether a person reads the stream directly.
[[nodiscard]] VELAMO_PRIVATE_API bool isTerminal(StandardStream stream) noexcept;

/// How a terminal can show a picture: not at all, as blocks of 256 or of all colours, or as what the sixel or the kitty
/// protocol describes.
enum class TerminalPictures : std::uint8_t { none, blocksOf256Colors, blocksOfAllColors, sixel, kitty };

/// What the terminal announces in the environment. A program that divides the terminal's window passes blocks alone.
[[nodiscard]] VELAMO_PRIVATE_API TerminalPictures
announcedPictures(const Environment& environment = processEnvironment);

/// The characters that stand side by side, and the lines below one another; 80 by 24 where the stream is no terminal or
/// does not tell.
struct TerminalSize {
    int columns = 80;
    int lines = 24;
};
[[nodiscard]] VELAMO_PRIVATE_API TerminalSize terminalSize(StandardStream stream) noexcept;

/// What a terminal takes the bytes of a character for, as the user's locale tells: one that takes each for a character
/// of its own obeys the second byte of "Ś" as it would a control character.
enum class TerminalEncoding : std::uint8_t { utf8, bytes };
[[nodiscard]] VELAMO_PRIVATE_API TerminalEncoding terminalEncoding() noexcept;

}  // namespace velamo
