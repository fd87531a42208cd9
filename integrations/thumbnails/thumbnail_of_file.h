#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "reading/confined_reader.h"
#include "velamo/platform/graphics/bitmap.h"

namespace velamo {

/// The picture of a design file that hosts show, with the threads of its side file where that can be seen: thumbnailOf
/// its design. Nothing, and the error, when the file holds no design that can be read or drawn. May throw WorkerLoss.
[[nodiscard]] std::optional<Bitmap> thumbnailOfFile(const std::filesystem::path& file, std::int32_t pixels,
                                                    ConfinedReader& reader, VLMError* error);

}  // namespace velamo
