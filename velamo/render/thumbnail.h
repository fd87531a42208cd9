#pragma once

#include <cstdint>
#include <optional>

#include "velamo/api.h"
#include "velamo/model/design.h"
#include "velamo/platform/graphics/bitmap.h"

namespace velamo {

/// The largest thumbnail that is drawn, and that desktops keep.
inline constexpr std::int32_t mostPixelsOfThumbnail = 1024;

/// Draws a small picture of the design on a transparent ground, as lists of files show it: each stitch is a round
/// thread on which light falls from the upper left, in as much detail as the size can show. The longer side has
/// `pixels` pixels, but at most mostPixelsOfThumbnail; the shorter side follows from the design's proportions and has
/// at least one. Lines are never thinner than a pixel, so that large designs do not fade. Jumps are left out. Threads
/// of unknown colours have different greys.
///
/// Returns nullopt when `pixels` is not positive, when the design has no size or no visible stitch, or when memory ran
/// out. Takes a few seconds at most, however many stitches there are and wherever they lie (see Cloth).
[[nodiscard]] VELAMO_API std::optional<Bitmap> thumbnailOf(const VLMDesign& design, std::int32_t pixels) noexcept;

}  // namespace velamo
