#include <charconv>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string_view>

#include "integrations/thumbnails/thumbnail_of_file.h"
#include "model/error.h"
#include "platform/files.h"

namespace velamo {
namespace {

bool writeThumbnail(const std::filesystem::path& design, const std::filesystem::path& picture, int pixels) noexcept {
    return operation(nullptr, [&] {
        const auto bitmap = thumbnailOfFile(design, pixels);
        const auto png = bitmap ? bitmap->png() : std::nullopt;
        return png && !replaceFile(picture, *png);
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
    constexpr int wanted = 4;
    const auto pixels = argumentCount == wanted ? velamo::pixelsIn(arguments[3]) : std::nullopt;
    if (!pixels) {
        std::fputs("usage: velamo-thumbnailer INPUT OUTPUT SIZE\n", stderr);
        return 2;
    }
    return velamo::writeThumbnail(arguments[1], arguments[2], *pixels) ? 0 : 1;
}
