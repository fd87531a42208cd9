#include "velamo/formats/palette_change.h"

#include <bit>

namespace velamo {

VLMThread PaletteChange::of(const VLMThread& thread) {
    if (thread.palette() == palette_) return thread;
    const auto bits = [](double part) { return std::bit_cast<std::uint64_t>(part); };
    const VLMColor& color = thread.color();
    const auto [known, isNew] =
        known_.try_emplace(Components{bits(color.red()), bits(color.green()), bits(color.blue())}, thread);
    if (isNew) known->second.changeToColorinPalette(color, palette_);
    VLMThread changed = known->second;
    changed.setLength(thread.length());
    changed.setTension(thread.tension());
    changed.setIsShown(thread.isShown());
    return changed;
}

}  // namespace velamo
