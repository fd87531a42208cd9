#include <charconv>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string_view>
#include <system_error>
#include <vector>

#include "integrations/thumbnails/thumbnail_of_file.h"
#include "model/error.h"
#include "platform/file_state.h"
#include "platform/files.h"
#include "platform/program_start.h"

namespace velamo {
namespace {

/// Xfce makes an empty file, and reads on in this very one when we are done; any other is replaced in one step.
bool writePicture(const std::filesystem::path& path, const std::vector<std::uint8_t>& png) {
    std::error_code failure;
    const FileState state = stateOfFile(path, failure);
    const bool isEmptyFile = !failure && state.kind == FileKind::regular && state.size == 0;
    return !(isEmptyFile ? fillEmptyFile(path, png) : replaceFile(path, png));
}

bool writeThumbnail(const std::filesystem::path& design, const std::filesystem::path& picture, int pixels) noexcept {
    return operation(nullptr, [&] {
        ConfinedReader reader;
        if (!reader.isConfined()) std::cerr << "velamo-thumbnailer: " << unconfinedNotice << '\n';
        const auto bitmap = thumbnailOfFile(design, pixels, reader);
        const auto png = bitmap ? bitmap->png() : std::nullopt;
        return png && writePicture(picture, *png);
    });
}

/// A whole number of pixels from one on, or nothing.
std::optional<int> pixelsIn(std::string_view text) noexcept {
    int pixels = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), pixels);
    const bool isNumber = failure == std::errc() && end == text.data() + text.size();
    return isNumber && pixels > 0 ? std::optional(pixels) : std::nullopt;
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
