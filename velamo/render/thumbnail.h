#pragma once

#include <cstdint>
#include <optional>

#include "velamo/api.h"
#include "velamo/model/design.h"
#include "velamo/platform/graphics/bitmap.h"

namespace velamo {

/// The largest picture that is drawn, and that hosts keep.
inline constexpr std::int32_t mostPixelsOfThumbnail = 1024;

/// A small picture of the design on a transparent ground, as lists of files show it: each stitch as a round thread on
/// which light falls from the upper left, as fine as the size shows it. The longer side has `pixels` pixels, but no
/// more than mostPixelsOfThumbnail, the other one as many as the design's proportions give, at least one. Lines are
/// never thinner than a pixel, so that large designs do not fade. Jumps are left out. Threads whose colours are not
/// known have different greys. Nothing when `pixels` is not positive, when the design has no size or no stitch that
/// shows, or when memory ran out. Takes a few seconds at most, however many stitches there are and wherever they lie:
/// see Cloth.
[[nodiscard]] VELAMO_API std::optional<Bitmap> thumbnailOf(const VLMDesign& design, std::int32_t pixels) noexcept;

}  // namespace velamo
