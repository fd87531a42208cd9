#include "integrations/thumbnails/thumbnail_of_file.h"

#include "render/thumbnail.h"

namespace velamo {

std::optional<Bitmap> thumbnailOfFile(const std::filesystem::path& file, std::int32_t pixels, ConfinedReader& reader) {
    VLMDesign design;
    if (!reader.readDesign(design, file, nullptr)) return std::nullopt;
    return thumbnailOf(design, pixels);
}

}  // namespace velamo
