#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "velamo/api.h"
#include "velamo/model/design.h"
#include "velamo/platform/graphics/bitmap.h"
#include "velamo/platform/system/byte_sink.h"

namespace velamo {

/// How a design is shown; the fields are the parameters of the same names of
/// drawDesignInRectofContextshow3DshowJumpsshowStructureshowThread (see draw_design.h).
struct VELAMO_API DesignLook {
    bool show3D = false;
    bool showJumps = false;
    bool showStructure = false;
    std::int32_t showThread = -1;
};

/// Returns what a picture of the design shows: its bounds and 1 mm around them, in tenths of a millimetre. Its size is
/// zero or negative when the bounds have no meaning.
[[nodiscard]] VELAMO_API DesignRect pictureRectOf(const VLMDesign& design) noexcept;

/// The size in pixels of a picture with `scale` pixels for each tenth of a millimetre. It may be more than can be
/// drawn.
struct VELAMO_API PictureSize {
    double width = 0;
    double height = 0;
};
[[nodiscard]] VELAMO_API PictureSize pictureSizeOf(const VLMDesign& design, double scale) noexcept;

/// Returns the scale at which the longer side has that many pixels, or 0 for a picture without a size.
[[nodiscard]] VELAMO_API double scaleForLongerSide(const VLMDesign& design, std::int32_t pixels) noexcept;

/// Draws a picture on a transparent ground with `scale` pixels for each tenth of a millimetre. Returns nullopt when the
/// picture has no size or more than a bitmap can have (see Bitmap::canBe), or when memory ran out.
[[nodiscard]] VELAMO_API std::optional<Bitmap> bitmapOf(const VLMDesign& design, double scale, const DesignLook& look);

/// Writes the same picture as lines and areas, in true size; the bytes of the file go into the sink as they are made.
/// Returns false when the sink refuses, the picture has no size or memory ran out. May throw std::bad_alloc and
/// whatever the sink throws.
[[nodiscard]] VELAMO_API bool writeSvgOf(const VLMDesign& design, const DesignLook& look, const ByteSink& sink);
[[nodiscard]] VELAMO_API bool writePdfOf(const VLMDesign& design, const DesignLook& look, const ByteSink& sink);

/// The same in memory. Returns nullopt on failure. May throw std::bad_alloc.
[[nodiscard]] VELAMO_API std::optional<std::vector<std::uint8_t>> svgOf(const VLMDesign& design,
                                                                        const DesignLook& look);
[[nodiscard]] VELAMO_API std::optional<std::vector<std::uint8_t>> pdfOf(const VLMDesign& design,
                                                                        const DesignLook& look);

}  // namespace velamo
