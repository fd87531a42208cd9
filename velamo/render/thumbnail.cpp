#include "velamo/render/thumbnail.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

#include "velamo/model/failure.h"
#include "velamo/model/needle_walk.h"
#include "velamo/render/cloth.h"

namespace velamo {
namespace {

constexpr double threadWidth = 4;          // rows of a filling lie as close
constexpr double leastPixelsOfThread = 1;  // so that large designs do not fade

struct Line {
    DesignPoint start;
    DesignPoint end;
    std::size_t thread = 0;
};

/// Hands over what every drawing of a design shows as stitches, neither jumps nor the first stitch behind each, and
/// goes on up to the stitch `end`. False where no thread is left.
template <class Visit>
bool go(const VLMDesign& design, NeedleWalk& walk, std::size_t end, Visit&& visit) {
    const auto& stitches = design.stitches().all();
    while (walk.stitch() < end) {
        const VLMStitch& stitch = stitches[walk.stitch()];
        const NeedleMove move = walk.take(stitch);
        if (move.thread >= design.threads().size()) return false;
        if (move.isSewn && !stitch.isNullStitch()) visit(Line{move.start, move.end, move.thread});
    }
    return true;
}

/// How a design lies in its picture.
class Frame {
public:
    Frame(const VLMDesign& design, std::int32_t pixels) noexcept
        : centerX_((double{design.xMin()} + design.xMax()) / 2), centerY_((double{design.yMin()} + design.yMax()) / 2) {
        const double width = double{design.xMax()} - design.xMin();
        const double height = double{design.yMax()} - design.yMin();
        const double longer = std::max(width, height);
        hasSize_ = width >= 0 && height >= 0 && longer > 0 && std::isfinite(longer) && pixels > 0;
        if (!hasSize_) return;
        scale_ = pixels / (longer + threadWidth);
        if (threadWidth * scale_ < leastPixelsOfThread && pixels > leastPixelsOfThread)
            scale_ = (pixels - leastPixelsOfThread) / longer;
        const auto side = [&](double length) {
            return std::clamp(static_cast<std::int32_t>(std::lround(length * scale_ + pixelsOfThread())), 1, pixels);
        };
        width_ = side(width);
        height_ = side(height);
    }

    [[nodiscard]] bool hasSize() const noexcept { return hasSize_; }
    [[nodiscard]] int width() const noexcept { return width_; }
    [[nodiscard]] int height() const noexcept { return height_; }
    [[nodiscard]] double truePixelsOfThread() const noexcept { return threadWidth * scale_; }
    [[nodiscard]] double pixelsOfThread() const noexcept { return std::max(truePixelsOfThread(), leastPixelsOfThread); }
    /// In pixels, y downward.
    [[nodiscard]] DesignPoint placeOf(DesignPoint point) const noexcept {
        return {width_ / 2.0 + (point.x - centerX_) * scale_, height_ / 2.0 - (point.y - centerY_) * scale_};
    }
    /// The rows of pixels that the line crosses, at most.
    [[nodiscard]] double rowsOf(const Line& line) const noexcept {
        return std::min<double>(std::abs(line.end.y - line.start.y) * scale_ + pixelsOfThread(), height_);
    }

private:
    double centerX_;
    double centerY_;
    bool hasSize_ = false;
    double scale_ = 0;
    int width_ = 0;
    int height_ = 0;
};

/// The places from where parts of the design are drawn, the last of them first, and the rows of pixels of all lines. So
/// the lines of a part are held, and not those of millions of stitches.
struct Parts {
    static constexpr std::size_t stitches = 1U << 14U;
    std::vector<NeedleWalk> places;
    double rows = 0;

    Parts(const VLMDesign& design, const Frame& frame) {
        const std::size_t count = design.stitches().size();
        bool isThreadLeft = true;
        for (NeedleWalk walk; isThreadLeft && walk.stitch() < count;) {
            places.push_back(walk);
            isThreadLeft = go(design, walk, std::min(count, walk.stitch() + stitches),
                              [&](const Line& line) { rows += frame.rowsOf(line); });
        }
    }
};

/// As fine as can be seen, but coarser where that takes long: in large pictures, and where stitches lie on each other
/// by the thousand.
int grainFor(const Frame& frame, double rows) noexcept {
    constexpr double mostWork = 1U << 24U;
    constexpr int finest = 4;
    const double pixels = static_cast<double>(frame.width()) * frame.height();
    int grain = finest;
    while (grain > 1 && !((rows + pixels * grain) * grain <= mostWork)) grain /= 2;
    return grain;
}

/// Where a thread is about a pixel wide or less, light and dark side would only make noise, and hide the colour.
double reliefFor(double pixelsOfThread) noexcept {
    constexpr double least = 0.1;
    constexpr double flatUpTo = 0.5;
    constexpr double fullFrom = 2.2;
    return std::clamp((pixelsOfThread - flatUpTo) / (fullFrom - flatUpTo), least, 1.0);
}

/// Blocks whose colours a file does not tell are told apart by their greys; that of the first one is the usual one.
VLMColor colorOf(const VLMDesign& design, std::size_t thread) {
    constexpr std::array<double, 6> greys{0.8, 0.58, 0.72, 0.46, 0.65, 0.52};
    const VLMThread& found = design.threads()[thread];
    if (found.palette() != Text("Undefined") || found.color() != VLMColor()) return found.color();
    const double grey = greys[thread % greys.size()];
    return VLMColor::initWithRedgreenblue(grey, grey, grey);
}

void sewAll(Cloth& cloth, const VLMDesign& design, const Parts& parts, const Frame& frame) {
    std::vector<Line> lines;
    std::optional<std::size_t> thread;
    const std::size_t count = design.stitches().size();
    for (std::size_t part = parts.places.size(); part-- > 0 && !cloth.isClosed();) {
        lines.clear();
        NeedleWalk walk = parts.places[part];
        static_cast<void>(go(design, walk, std::min(count, walk.stitch() + Parts::stitches),
                             [&lines](const Line& line) { lines.push_back(line); }));
        for (std::size_t i = lines.size(); i-- > 0;) {
            const Line& line = lines[i];
            if (line.thread != thread) cloth.takeThread(colorOf(design, line.thread));
            thread = line.thread;
            cloth.sewBelow(frame.placeOf(line.start), frame.placeOf(line.end), frame.pixelsOfThread());
        }
    }
}

bool isEmpty(const Bitmap& bitmap) noexcept {
    const auto pixels = bitmap.pixels();
    return std::all_of(pixels.begin(), pixels.end(), [](std::uint32_t pixel) { return pixel == 0; });
}

}  // namespace

std::optional<Bitmap> thumbnailOf(const VLMDesign& design, std::int32_t pixels) noexcept {
    std::optional<Bitmap> bitmap;
    const bool isDrawn = operation(nullptr, [&] {
        const Frame frame(design, std::min(pixels, mostPixelsOfThumbnail));
        if (!frame.hasSize()) return false;
        bitmap = Bitmap::make(frame.width(), frame.height());
        if (!bitmap) return false;
        const Parts parts(design, frame);
        Cloth cloth(frame.width(), frame.height(), grainFor(frame, parts.rows), reliefFor(frame.truePixelsOfThread()));
        sewAll(cloth, design, parts, frame);
        cloth.show(*bitmap);
        return !isEmpty(*bitmap);
    });
    if (!isDrawn) bitmap.reset();
    return bitmap;
}

}  // namespace velamo
