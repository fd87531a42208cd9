#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "platform/bitmap.h"
#include "reading/confined_reader.h"

namespace velamo {

/// The picture of a design file that hosts show, with the threads of its side file where that can be seen: thumbnailOf
/// its design. Nothing when that gives nothing, or the file holds no design that can be read.
/// May throw WorkerLoss.
[[nodiscard]] std::optional<Bitmap> thumbnailOfFile(const std::filesystem::path& file, std::int32_t pixels,
                                                    ConfinedReader& reader);

}  // namespace velamo
