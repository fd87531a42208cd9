#pragma once

#include <string>

#include "velamo/platform/graphics/bitmap.h"
#include "velamo/platform/system/terminal.h"

namespace velamo {

/// The longer side that a picture shall have, in pixels, to be small on a terminal of the size.
[[nodiscard]] int pixelsOnTerminal(TerminalPictures pictures, TerminalSize size) noexcept;

/// The text that makes a terminal show the picture, a line's end behind it. "" for terminals that show none. Blocks
/// take a character for two pixels that lie above one another, and mark nothing where the picture is transparent.
[[nodiscard]] std::string terminalPicture(const Bitmap& bitmap, TerminalPictures pictures);

}  // namespace velamo
