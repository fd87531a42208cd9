#include "cli/format_loss.h"

#include <algorithm>
#include <cmath>

#include "velamo/formats/undefined_threads.h"

namespace velamo {
namespace {

/// Files keep a component as a byte.
bool isSameColor(const VLMColor& one, const VLMColor& other) noexcept {
    constexpr double byteStep = 1.01 / 255;
    return std::abs(one.red() - other.red()) < byteStep && std::abs(one.green() - other.green()) < byteStep &&
           std::abs(one.blue() - other.blue()) < byteStep;
}

struct ColorLoss {
    std::size_t known = 0;
    std::size_t gone = 0;
    std::size_t changed = 0;
};

ColorLoss colorLossOf(std::span<const VLMThread> wanted, std::span<const VLMThread> found) {
    ColorLoss loss;
    for (std::size_t i = 0; i < std::min(wanted.size(), found.size()); ++i) {
        if (hasNoColor(wanted[i])) continue;
        ++loss.known;
        if (hasNoColor(found[i]))
            ++loss.gone;
        else if (!isSameColor(wanted[i].color(), found[i].color()))
            ++loss.changed;
    }
    return loss;
}

/// Follows a design's moves and those of its file, which has an entry for each, and may have one more on the spot at
/// the start and behind each color change: the record of the change itself.
class MovesInStep {
public:
    MovesInStep(const StitchList& written, const StitchList& found) : written_(written), found_(found) {}

    /// How many moves of the design come behind the last one of the file.
    [[nodiscard]] std::size_t missing() {
        while (next_ < written_.size() && inFile_ < found_.size()) step();
        return static_cast<std::size_t>(std::count_if(written_.begin() + static_cast<std::ptrdiff_t>(next_),
                                                      written_.end(),
                                                      [](const VLMStitch& stitch) { return !stitch.isColorChange(); }));
    }

private:
    void step() {
        const VLMStitch& stitch = written_[next_];
        const VLMStitch& other = found_[inFile_++];
        const bool isRecordOfChange =
            mayHaveMore_ && other.isNullStitch() && !other.isColorChange() && !stitch.isNullStitch();
        mayHaveMore_ = other.isColorChange();
        if (!isRecordOfChange) ++next_;
    }

    const StitchList& written_;
    const StitchList& found_;
    std::size_t next_ = 0;
    std::size_t inFile_ = 0;
    bool mayHaveMore_ = true;
};

/// "its 5 threads", "2 of its 5 threads".
std::string someOf(std::size_t part, std::size_t all, const std::string& thing) {
    if (all == 1) return "its " + thing;
    return (part == all ? "its " : std::to_string(part) + " of its ") + std::to_string(all) + ' ' + thing + 's';
}

}  // namespace

std::string lossOf(const Comparison& comparison) {
    const ColorLoss colors = colorLossOf(comparison.wanted, comparison.found);
    const std::size_t wanted = comparison.wanted.size();
    const std::size_t found = std::min(wanted, comparison.found.size());
    const std::size_t more = comparison.found.size() - found;
    const std::size_t moves = MovesInStep(comparison.written.stitches(), comparison.readBack.stitches()).missing();
    std::string text;
    const auto add = [&text](std::size_t count, const std::string& loss) {
        if (count > 0) text += (text.empty() ? "" : ", ") + loss;
    };
    add(colors.gone, "without " + someOf(colors.gone, colors.known, "color"));
    add(colors.changed, "with the nearest color there is for " + someOf(colors.changed, wanted, "thread"));
    add(more, "with " + (more == 1 ? "a thread" : std::to_string(more) + " threads") + " more");
    add(wanted - found, "without " + someOf(wanted - found, wanted, "thread"));
    add(moves, "without the last " + (moves == 1 ? "stitch" : std::to_string(moves) + " stitches"));
    return text;
}

}  // namespace velamo
