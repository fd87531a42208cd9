#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "platform/bitmap.h"

namespace velamo {

/// The picture of a design file that hosts show, with the threads of its side file where that can be seen: thumbnailOf
/// its design. Nothing when that gives nothing, or the file holds no design that can be read.
[[nodiscard]] std::optional<Bitmap> thumbnailOfFile(const std::filesystem::path& file, std::int32_t pixels) noexcept;

}  // namespace velamo
