#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "velamo/api.h"
#include "velamo/model/design.h"
#include "velamo/platform/graphics/bitmap.h"
#include "velamo/platform/system/byte_sink.h"

namespace velamo {

/// How a design is shown; see drawDesignInRect...
struct VELAMO_API DesignLook {
    bool show3D = false;
    bool showJumps = false;
    bool showStructure = false;
    std::int32_t showThread = -1;
};

/// What a picture of the design shows: its bounds and 1 mm round them. Of no or negative size for a design whose bounds
/// say nothing.
[[nodiscard]] VELAMO_API VLMRect pictureRectOf(const VLMDesign& design) noexcept;

/// The pixels of a picture with `scale` pixels for each tenth of a millimetre, which may be more than can be drawn.
struct VELAMO_API PictureSize {
    double width = 0;
    double height = 0;
};
[[nodiscard]] VELAMO_API PictureSize pictureSizeOf(const VLMDesign& design, double scale) noexcept;

/// The scale at which the longer side has so many pixels; 0 for a picture of no size.
[[nodiscard]] VELAMO_API double scaleForLongerSide(const VLMDesign& design, std::int32_t pixels) noexcept;

/// A picture on a transparent ground. Nothing when its size is none, or more than a bitmap can have, or memory ran out.
[[nodiscard]] VELAMO_API std::optional<Bitmap> bitmapOf(const VLMDesign& design, double scale, const DesignLook& look);

/// The same picture as lines and areas, in true size: its file goes into the sink as it is made. False when the sink
/// refuses, the picture has no size or memory ran out.
[[nodiscard]] VELAMO_API bool writeSvgOf(const VLMDesign& design, const DesignLook& look, const ByteSink& sink);
[[nodiscard]] VELAMO_API bool writePdfOf(const VLMDesign& design, const DesignLook& look, const ByteSink& sink);

/// The same in memory. Nothing on failure.
[[nodiscard]] VELAMO_API std::optional<std::vector<std::uint8_t>> svgOf(const VLMDesign& design,
                                                                        const DesignLook& look);
[[nodiscard]] VELAMO_API std::optional<std::vector<std::uint8_t>> pdfOf(const VLMDesign& design,
                                                                        const DesignLook& look);

}  // namespace velamo
