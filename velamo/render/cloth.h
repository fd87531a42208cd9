#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "velamo/model/color.h"
#include "velamo/model/design.h"
#include "velamo/platform/graphics/bitmap.h"

namespace velamo {

/// Pixels on which threads lie as round and shining things, lit from the upper left. A thread covers a pixel whole or
/// not at all, and each pixel of the picture is the mean of `grain` by `grain` of these: so threads that touch leave no
/// seam between them, as smoothed edges would.
///
/// What lies below a closed heap of stitches costs next to nothing, and where stitches lie on each other by the
/// thousand without ever closing what they lie on, the cloth loses its patience: of a picture with a grain of 1,
/// squares of 32 by 32 pixels that some thousands of stitches have touched (2^22 for all squares together) are taken
/// for covered, and what still comes below shows no more in them. So no list of stitches, however long, takes longer
/// than a few seconds.
class Cloth {
public:
    /// For a picture of the size. `relief` tells how round threads look: from 0, flat, to 1. May throw std::bad_alloc.
    Cloth(int pictureWidth, int pictureHeight, int grain, double relief);

    /// The thread of the stitches that follow.
    void takeThread(const VLMColor& color) noexcept;
    /// A stitch below all that were sewn before, so that no pixel is drawn twice, between two places of the picture,
    /// whose y points down; the unit is one of its pixels. What lies outside is left out, and so is a stitch of no
    /// length or one whose place is no number.
    void sewBelow(DesignPoint start, DesignPoint end, double threadWidth) noexcept;
    /// Whether no stitch can show any more.
    [[nodiscard]] bool isClosed() const noexcept { return openTiles_ == 0; }
    /// Fills the bitmap, which has the size of the picture.
    void show(Bitmap& bitmap) const noexcept;

private:
    /// What light makes of a thread's colour: so many 256ths of it, and white on top.
    struct Shade {
        int light = 0;
        int gloss = 0;
    };
    struct Vector {
        double x = 0;
        double y = 0;
        double z = 0;
    };
    struct Color {
        int red = 0;
        int green = 0;
        int blue = 0;
    };
    static constexpr std::size_t placesAcross = 32;
    static constexpr std::size_t directions = 64;
    static constexpr std::size_t depths = 8;
    using Profile = std::array<Shade, placesAcross>;                           // from one rim to the other
    using Inks = std::array<std::array<std::uint32_t, placesAcross>, depths>;  // from the ends to the middle

    /// A stitch on the way onto the cloth, in its pixels.
    struct Line {
        DesignPoint start;
        DesignPoint along;  // of length 1
        double inverseOfX = 0;
        double inverseOfY = 0;  // the way across
        double length = 0;
        double radius = 0;
        float placesOfPixel = 0;
        float depthsOfPixel = 0;
        bool hasWideEnds = false;    // round ones, beside which many pixels lie
        const Inks* inks = nullptr;  // from its first pixel on
    };

    /// What a stitch is known by, when it comes again.
    struct Sewn {
        DesignPoint start;
        DesignPoint end;
        double threadWidth = 0;
        friend bool operator==(const Sewn&, const Sewn&) = default;
    };

    /// A square of pixels, or what lies of it within the cloth.
    struct Tile {
        std::uint32_t bare = 0;
        std::uint32_t patience = 0;  // for so many more stitches
    };

    [[nodiscard]] static double scalarProduct(const Vector& one, const Vector& other) noexcept;
    [[nodiscard]] static Shade shadeOf(const Vector& normal, const Vector& along) noexcept;
    [[nodiscard]] Profile profileOf(std::size_t direction) const noexcept;
    [[nodiscard]] const Inks& inksOf(DesignPoint along) noexcept;
    void mix(std::size_t direction) noexcept;
    void layTiles();
    [[nodiscard]] Tile& tileAt(int row, int column) noexcept;
    void closeTile(int row) noexcept;
    [[nodiscard]] bool isSewn(const Sewn& stitch) noexcept;
    [[nodiscard]] bool touchesOpenTile(int firstRow, int endRow, const Line& line) noexcept;
    void drawRow(int row, Line& line) noexcept;
    [[nodiscard]] std::uint32_t meanAt(int column, int row) const noexcept;

    int grain_;
    int width_;
    int height_;
    double relief_;
    std::vector<std::uint32_t> pixels_;
    std::vector<std::uint16_t> covered_;  // for each pixel 0, or how many from it on are known to be covered
    int tilesAcross_;
    std::vector<Tile> tiles_;
    std::vector<int> openTilesOfRow_;  // in each row of tiles
    std::size_t openTiles_ = 0;
    std::vector<Sewn> sewn_;  // stitches of late, each at the place that its hash gives it
    std::array<Profile, directions> profiles_{};
    Color color_;
    // Of the thread at hand. To mix for each pixel takes a third longer.
    std::array<Inks, directions> inks_{};
    std::bitset<directions> isMixed_;  // which of them
};

}  // namespace velamo
