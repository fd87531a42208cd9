#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>

#include "velamo/model/design.h"

namespace velamo {

/// Gives threads the nearest colours of a palette, for a format whose files know those of their maker only. Threads
/// that had one colour share the new one: a design may change between a few colours a million times, and the search
/// for the nearest is long.
class PaletteChange {
public:
    explicit PaletteChange(std::string palette) : palette_(std::move(palette)) {}

    /// The thread in the palette's nearest colour, or as it is where it belongs to the palette.
    [[nodiscard]] VLMThread of(const VLMThread& thread);

private:
    using Components = std::array<std::uint64_t, 3>;  // their bits: a colour of a file may be no number

    std::string palette_;
    std::map<Components, VLMThread> known_;
};

/// Replaces each thread by the one of the palette, unless the design uses a thread file, and hands the latter on.
template <class OnThread>
void takeToPalette(VLMDesign& design, const char* palette, OnThread onThread) {
    PaletteChange change(palette);
    for (VLMThread& thread : design.threads()) {
        VLMThread written = change.of(thread);
        onThread(written);
        if (!design.useThreadFile()) thread = std::move(written);
    }
}

}  // namespace velamo
