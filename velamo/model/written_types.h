#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace velamo {

/// A type of design that we write, and the longest moves that a record of its files holds along one axis, in tenths of
/// a millimetre.
struct WrittenType {
    std::string_view type;  // as designType() has it
    float longestStitch;
    float longestJump;
};

/// All types that we write. This is the only list of them: the writers, the fitting of moves and isWritable() go by.
inline constexpr auto writtenTypes = std::to_array<WrittenType>({
    {"JEF", 126, 126},
    {"PES", 62, 2046},
    {"PEC", 62, 2046},
    {"EXP", 126, 126},
    {"DST", 120, 120},
    {"PCS", 1150, 1150},
});

/// The entry of the type with this name, or null when we do not write designs of that type.
[[nodiscard]] constexpr const WrittenType* writtenTypeNamed(std::string_view type) noexcept {
    const auto* const found = std::find_if(writtenTypes.begin(), writtenTypes.end(),
                                           [type](const WrittenType& written) { return written.type == type; });
    return found == writtenTypes.end() ? nullptr : found;
}

}  // namespace velamo
