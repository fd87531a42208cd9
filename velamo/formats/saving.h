#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>

#include "velamo/api.h"
#include "velamo/model/error.h"

namespace velamo {

struct PecThumbnails;
/// The thumbnails that the library draws itself.
extern VELAMO_API const PecThumbnails drawnPecThumbnails;

/// What a caller may choose about a file that is written.
struct VELAMO_API ExportOptions {
    /// The date and time to put into the file, if its format has a place for them: 14 digits, from year to second. When
    /// empty, the current time by the user's clock is used.
    std::string dateText;
    /// Receives the bytes of the finished file. It is called at most once, when nothing else can fail any more, in the
    /// thread that exports. To make the export fail, it returns false and fills `error`, unless that is null. When
    /// `save` is empty, the file at `url` is replaced in one step, and the export fails with the system's error if that
    /// is not possible.
    std::function<bool(const std::filesystem::path& url, std::span<const std::uint8_t> file, VLMError* error)> save =
        nullptr;
    /// Draws the thumbnails of PES and PEC files; must not be null. It is named here, where a caller makes the options,
    /// and not in the writers, so that a program that only reads designs needs no code for drawing.
    const PecThumbnails* thumbnails = &drawnPecThumbnails;
};

}  // namespace velamo
