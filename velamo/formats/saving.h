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
/// The thumbnails that the drawing of designs makes.
extern VELAMO_API const PecThumbnails drawnPecThumbnails;

/// What a caller may want to say about a file that is written.
struct VELAMO_API ExportOptions {
    /// The date and time that the file carries, where its format does so: 14 digits, year to second. Empty: now, by the
    /// user's clock.
    std::string dateText;
    /// What takes the bytes of the finished file, which is called once, and when nothing else can fail; false, with an
    /// error in the slot, fails the export. Empty: they are put at the URL in one step, as replaceFile does, or the
    /// system's error is given.
    std::function<bool(const std::filesystem::path& url, std::span<const std::uint8_t> file, VLMError* error)> save =
        nullptr;
    /// What makes the thumbnails in PES and PEC files. It is named here, where a caller makes the options, and not in
    /// the writers: so a program that only reads designs needs nothing that draws.
    const PecThumbnails* thumbnails = &drawnPecThumbnails;
};

}  // namespace velamo
