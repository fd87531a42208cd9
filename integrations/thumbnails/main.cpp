#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string_view>
#include <system_error>
#include <vector>

#include "integrations/thumbnails/thumbnail_of_file.h"
#include "reading/reader_failures.h"
#include "velamo/model/failure.h"
#include "velamo/platform/system/file_state.h"
#include "velamo/platform/system/files.h"
#include "velamo/platform/system/program_start.h"
#include "velamo/platform/text/plain_number.h"

namespace velamo {
namespace {

constexpr std::string_view name = "velamo-thumbnailer";

/// Xfce makes an empty file, and reads on in this very one when we are done; any other is replaced in one step.
bool writePicture(const std::filesystem::path& path, const std::vector<std::uint8_t>& png) {
    std::error_code failure;
    const FileState state = stateOfFile(path, failure);
    const bool isEmptyFile = !failure && state.kind == FileKind::regular && state.size == 0;
    const std::error_code reason = isEmptyFile ? fillEmptyFile(path, png) : replaceFile(path, png);
    VLMError error;
    if (reason) std::cerr << (failWithSystemError(reason.value(), &error) ? "" : problemLine(name, path, error));
    return !reason;
}

bool writeThumbnail(const std::filesystem::path& design, const std::filesystem::path& picture, int pixels) noexcept {
    VLMError error;
    bool isWritten = false;
    const bool isDrawn = operation(&error, [&] {
        ConfinedReader reader;
        if (!reader.isConfined()) std::cerr << name << ": " << unconfinedNotice << '\n';
        const auto bitmap = thumbnailOfFile(design, pixels, reader, &error);
        if (!bitmap) return false;
        const auto png = bitmap->png();
        if (!png) return failWithSystemError(ENOMEM, &error);
        isWritten = writePicture(picture, *png);
        return true;
    });
    if (!isDrawn) std::cerr << problemLine(name, design, error);
    return isDrawn && isWritten;
}

/// A whole number of pixels from one on, or nothing.
std::optional<int> pixelsIn(std::string_view text) noexcept {
    const auto pixels = plainNumber<int>(text);
    return pixels && *pixels > 0 ? pixels : std::nullopt;
}

}  // namespace
}  // namespace velamo

int main(int argumentCount, char** arguments) {
    velamo::startProgram();
    constexpr int wanted = 4;
    const auto pixels = argumentCount == wanted ? velamo::pixelsIn(arguments[3]) : std::nullopt;
    if (!pixels) {
        std::fputs("usage: velamo-thumbnailer INPUT OUTPUT SIZE\n", stderr);
        return 2;
    }
    return velamo::writeThumbnail(arguments[1], arguments[2], *pixels) ? 0 : 1;
}
