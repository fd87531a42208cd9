#include "integrations/thumbnails/thumbnail_of_file.h"

#include "reading/read_design.h"
#include "render/thumbnail.h"

namespace velamo {

std::optional<Bitmap> thumbnailOfFile(const std::filesystem::path& file, std::int32_t pixels) noexcept {
    VLMDesign design;
    if (!readDesign(design, file, nullptr)) return std::nullopt;
    return thumbnailOf(design, pixels);
}

}  // namespace velamo
