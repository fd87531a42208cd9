#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "platform/bitmap.h"

namespace velamo {

/// The largest picture that is drawn, twice what any host asks for.
inline constexpr std::int32_t mostPixelsOfThumbnail = 2048;

/// The picture of a design file that hosts show, with the threads of its side file where that can be seen: no wider and
/// no higher than `pixels`, nor than mostPixelsOfThumbnail. Nothing when the file holds no design that can be read,
/// when the design has nothing to show, or when memory ran out.
[[nodiscard]] std::optional<Bitmap> thumbnailOfFile(const std::filesystem::path& file, std::int32_t pixels) noexcept;

}  // namespace velamo
