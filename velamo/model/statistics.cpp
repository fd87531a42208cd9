#include <algorithm>
#include <unordered_set>

#include "velamo/measure/value_transformer.h"
#include "velamo/model/description_pattern.h"
#include "velamo/model/design.h"
#include "velamo/model/written_types.h"
#include "velamo/platform/text/resources.h"
#include "velamo/platform/text/text.h"

namespace velamo {
namespace {

constexpr std::int32_t pesVersionThatIsWritten = 10;

/// Truncation toward zero. Bounds without stitches give a size far outside 32 bits, which then stays at the edge.
std::int32_t truncated(float value) noexcept {
    constexpr float twoTo31 = 2147483648.0F;
    if (value >= twoTo31) return std::numeric_limits<std::int32_t>::max();
    if (value >= -twoTo31) return static_cast<std::int32_t>(value);
    return std::numeric_limits<std::int32_t>::min();
}

struct ColorHash {
    std::size_t operator()(const VLMColor& color) const noexcept { return color.hash(); }
};

std::string designText(std::string_view key, std::string_view fallback) {
    return localizedText(key, "VLMDesign", fallback);
}

/// What every thread says, or `otherwise`: at the first that differs the candidate becomes `otherwise`, and later
/// threads are compared with that.
template <class TextOfThread>
std::string commonText(const ThreadList& threads, const std::string& otherwise, TextOfThread textOf) {
    Text candidate = threads.empty() ? Text(otherwise) : textOf(threads[0]);
    for (const VLMThread& thread : threads)
        if (textOf(thread) != candidate) candidate = otherwise;
    return candidate.value_or(otherwise);
}

Text lengthText(std::int32_t tenths) {
    return VLMValueTransformer().transformedValue(static_cast<float>(tenths / 10.0));
}

/// "2. Sky Blue, 019": the palette's name only where the thread belongs to one.
std::string threadLine(std::size_t index, const VLMThread& thread) {
    std::string line = fillPattern("\n%i. %@", {static_cast<std::int64_t>(index) + 1, thread.name()});
    if (thread.palette() != "" && thread.palette() != "Undefined") line += fillPattern(", %@", {thread.palette()});
    return line;
}

}  // namespace

std::string descriptionPattern(bool withHoop) {
    return withHoop ? designText("DESCRIPTION_WITH_HOOP",
                                 "%@ (%@ Version %1.1f)\nsize: %@ x %@, hoop %@\n%i stitches including %i jumps\n"
                                 "%i color changes with %i different colors")
                    : designText("DESCRIPTION_WITHOUT_HOOP",
                                 "%@ (%@ Version %1.1f)\nsize: %@ x %@\n%i stitches including %i jumps\n"
                                 "%i color changes with %i different colors");
}

std::int32_t VLMDesign::designWidth() const noexcept {
    return truncated(xMax_ - xMin_);
}

std::int32_t VLMDesign::designHeight() const noexcept {
    return truncated(yMax_ - yMin_);
}

DesignPoint VLMDesign::centerOfDesign() const noexcept {
    return {(xMin_ + xMax_) * 0.5F, (yMin_ + yMax_) * 0.5F};
}

std::int32_t VLMDesign::numberOfThreads() const noexcept {
    return static_cast<std::int32_t>(threads_.size());
}

std::int32_t VLMDesign::numberOfJumps() const noexcept {
    return static_cast<std::int32_t>(std::count_if(stitches_.begin(), stitches_.end(), [](const VLMStitch& stitch) {
        return stitch.isJumpStitch() && !stitch.isColorChange();
    }));
}

std::int32_t VLMDesign::numberOfDifferentColors() const {
    std::unordered_set<VLMColor, ColorHash> colors;
    for (const VLMThread& thread : threads_) colors.insert(thread.color());
    return static_cast<std::int32_t>(colors.size());
}

std::int32_t VLMDesign::numberOfStitches() const noexcept {
    if (!stitches_.isThere()) return 0;
    return static_cast<std::int32_t>(static_cast<std::int64_t>(stitches_.size()) + 1 - numberOfThreads());
}

DesignPoint VLMDesign::firstStitch() const noexcept {
    DesignPoint position;
    for (const VLMStitch& stitch : stitches_) {
        if (!stitch.isJumpStitch()) break;
        position.x += static_cast<double>(stitch.deltaX());
        position.y += static_cast<double>(stitch.deltaY());
    }
    return position;
}

DesignPoint VLMDesign::lastStitch() const noexcept {
    DesignPoint position;
    for (const VLMStitch& stitch : stitches_) {
        position.x += static_cast<double>(stitch.deltaX());
        position.y += static_cast<double>(stitch.deltaY());
    }
    return position;
}

std::string VLMDesign::designPalette() const {
    return commonText(threads_, "", [](const VLMThread& thread) -> const Text& { return thread.palette(); });
}

std::string VLMDesign::designPaletteName() const {
    return commonText(threads_, designText("PATTERN_PALETTE", "Threadcolors"),
                      [](const VLMThread& thread) -> const Text& { return thread.paletteName(); });
}

bool VLMDesign::isWritable() const noexcept {
    if (!designType_ || (*designType_ == "PES" && designVersion_ != pesVersionThatIsWritten)) return false;
    return writtenTypeNamed(*designType_) != nullptr;
}

const VLMColor& VLMDesign::colorOfThread(std::int32_t index) const {
    return threads_.at(static_cast<std::size_t>(index)).color();
}

const Text& VLMDesign::nameOfThread(std::int32_t index) const {
    return threads_.at(static_cast<std::size_t>(index)).name();
}

const Text& VLMDesign::paletteOfThread(std::int32_t index) const {
    return threads_.at(static_cast<std::size_t>(index)).palette();
}

bool VLMDesign::isShownOfThread(std::int32_t index) const {
    return threads_.at(static_cast<std::size_t>(index)).isShown();
}

void VLMDesign::setIsShownofThread(bool isShown, std::int32_t index) {
    threads_.at(static_cast<std::size_t>(index)).setIsShown(isShown);
}

bool VLMDesign::isShownOfAllThreads() const noexcept {
    return std::all_of(threads_.begin(), threads_.end(), [](const VLMThread& thread) { return thread.isShown(); });
}

std::int64_t VLMDesign::indexOfShownThread() const noexcept {
    const auto shown =
        std::find_if(threads_.begin(), threads_.end(), [](const VLMThread& thread) { return thread.isShown(); });
    return shown == threads_.end() ? indexNotFound : shown - threads_.begin();
}

std::string VLMDesign::description() const {
    std::string text;
    describe([&text](const std::string& piece) { text += piece; });
    return text;
}

void VLMDesign::describe(const std::function<void(const std::string&)>& take) const {
    std::vector<PatternArgument> arguments{designName_, designType_, designVersion_ / 10.0, lengthText(designWidth()),
                                           lengthText(designHeight())};
    if (designHoop_) arguments.emplace_back(hoopName());
    for (const std::int32_t count : {numberOfStitches(), numberOfJumps(), numberOfThreads(), numberOfDifferentColors()})
        arguments.emplace_back(std::int64_t{count});
    take(fillPattern(descriptionPattern(designHoop_ != nullptr), arguments));
    for (std::size_t index = 0; index < threads_.size(); ++index) take(threadLine(index, threads_[index]));
}

}  // namespace velamo
