#include "velamo/model/thread.h"

#include <cmath>

#include "velamo/model/color_list.h"
#include "velamo/model/error.h"
#include "velamo/platform/system/log.h"
#include "velamo/platform/text/resources.h"
#include "velamo/platform/text/text.h"

namespace velamo {
namespace {

constexpr std::int32_t usualTension = 13;

std::string designText(std::string_view key, std::string_view fallback) {
    return localizedText(key, "VLMDesign", fallback);
}

/// The name of a colour that belongs to no palette.
std::string individualName(const VLMColor& color, std::string_view fallback) {
    return fillPattern(designText("COLOR_INDIVIDUAL", fallback),
                       {color.red() * 255, color.green() * 255, color.blue() * 255});
}

std::string nameOfKey(std::string_view key, std::string_view palette) {
    return localizedText(key, palette, "Unknown color");
}

std::string nameOfPalette(std::string_view palette) {
    return localizedText(palette, palette, "Threadcolors");
}

/// A distance no colour of a palette has, so that whatever is so far away is never chosen.
constexpr double outOfReach = 32767.0;

/// The weighted distance by which palette colours are chosen. The blue weight takes the difference of reds where the
/// well-known formula takes their mean: that is kept, because it decides which colour a design is given.
double distance(const VLMColor& wanted, const VLMColor& offered) noexcept {
    const double red = (wanted.red() - offered.red()) * 255;
    const double green = (wanted.green() - offered.green()) * 255;
    const double blue = (wanted.blue() - offered.blue()) * 255;
    const double meanRed = (offered.red() + wanted.red()) * 255 * 0.5;
    return std::sqrt((meanRed * 0.00390625 + 2) * (red * red) + 4 * (green * green) +
                     ((255 - red) * 0.00390625 + 2) * (blue * blue));
}

/// The nearest key of the palette, the first of several equally near; nothing in an empty palette.
const std::string* nearestKey(const VLMColorList& palette, const VLMColor& wanted, bool mayTakeSpecialKeys) noexcept {
    const std::string* best = nullptr;
    double bestDistance = outOfReach;
    for (const std::string& key : palette.allKeys()) {
        if (!mayTakeSpecialKeys && key.front() == 'x') continue;
        const double candidate = distance(wanted, *palette.colorWithKey(key));
        if (!(candidate < bestDistance)) continue;
        best = &key;
        bestDistance = candidate;
        if (candidate == 0.0) break;
    }
    return best;
}

}  // namespace

VLMThread VLMThread::initWithColorandNameforKeyofPalettewithName(VLMColor color, Text name, Text key, Text palette,
                                                                 Text paletteName) {
    VLMThread thread;
    thread.look_ =
        SharedValue(Look{color, std::move(name), std::move(key), std::move(palette), std::move(paletteName)});
    thread.tension_ = usualTension;
    thread.isShown_ = true;
    return thread;
}

VLMThread VLMThread::initWithKeyofPalette(const Text& key, const Text& palette) {
    const auto colors = palette ? paletteNamed(*palette) : nullptr;
    const VLMColor* color = colors && key ? colors->colorWithKey(*key) : nullptr;
    if (color == nullptr) {
        const VLMColor grey;
        const auto name = individualName(grey, "Individual color (%i, %i, %i)");
        return initWithColorandNameforKeyofPalettewithName(grey, name, key, palette, "");
    }
    return initWithColorandNameforKeyofPalettewithName(*color, nameOfKey(*key, *palette), key, palette,
                                                       nameOfPalette(*palette));
}

bool VLMThread::changeToColorinPalette(const VLMColor& color, const std::string& palette) {
    if (palette.empty()) {
        const auto name = individualName(color, "Individual color (%1.0f, %1.0f, %1.0f)");
        look_ = SharedValue(Look{color, name, "", "", designText("PATTERN_PALETTE", "Threadcolors")});
        return true;
    }
    const auto colors = paletteNamed(palette);
    if (!colors) {
        logToSystem(designText("ERROR_140", "color palette not found"));
        return false;
    }
    const std::string* key = nearestKey(*colors, color, this->palette() == palette);
    const std::string name = key ? nameOfKey(*key, palette) : "";
    look_ = SharedValue(
        Look{key ? *colors->colorWithKey(*key) : VLMColor(), name, key ? *key : "", palette, nameOfPalette(palette)});
    return true;
}

const VLMThread::Look& VLMThread::look() const noexcept {
    static const Look absent;
    return look_.get() == nullptr ? absent : *look_.get();
}

bool operator==(const VLMThread& one, const VLMThread& other) noexcept {
    return one.look() == other.look() && one.length_ == other.length_ && one.tension_ == other.tension_ &&
           one.isShown_ == other.isShown_;
}

std::string VLMThread::description() const {
    return fillPattern(
        "Embroidery Thread: color=%@ of palette %@, name=%@, key=%@, length=%1.1f, tension=%i",
        {color().description(), paletteName(), name(), key(), static_cast<double>(length_), std::int64_t{tension_}});
}

}  // namespace velamo
