#include "integrations/thumbnails/thumbnail_of_file.h"

#include <cerrno>

#include "velamo/model/failure.h"
#include "velamo/render/thumbnail.h"

namespace velamo {

std::optional<Bitmap> thumbnailOfFile(const std::filesystem::path& file, std::int32_t pixels, ConfinedReader& reader,
                                      VLMError* error) {
    VLMDesign design;
    if (!reader.readDesign(design, file, error)) return std::nullopt;
    auto bitmap = thumbnailOf(design, pixels);
    if (!bitmap) failWithSystemError(ENOMEM, error);
    return bitmap;
}

}  // namespace velamo
