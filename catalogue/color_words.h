#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

namespace velamo {

/// What people call colours of thread, in English and German; each colour has one of these names.
struct ColorName {
    std::string_view english;
    std::string_view german;
};
inline constexpr std::array<ColorName, 16> colorNames{{
    {"black", "schwarz"},
    {"grey", "grau"},
    {"white", "weiß"},
    {"brown", "braun"},
    {"beige", "beige"},
    {"gold", "gold"},
    {"yellow", "gelb"},
    {"orange", "orange"},
    {"red", "rot"},
    {"pink", "rosa"},
    {"magenta", "magenta"},
    {"purple", "lila"},
    {"blue", "blau"},
    {"turquoise", "türkis"},
    {"green", "grün"},
    {"olive", "oliv"},
}};

/// The index of the name of the colour 0xRRGGBB: that of the nearest of some colours that surely have it.
[[nodiscard]] std::size_t colorNameOf(std::uint32_t color);

/// Two colours no farther apart than this may do for each other on a shirt; what an eye can just tell is 1.
inline constexpr double likeDifference = 10;

/// Which colours are meant.
using ColorTest = std::function<bool(std::uint32_t color)>;

/// What parseColor reads, in words for a person.
inline constexpr std::string_view colorForms = "a color such as red or rot, or #rrggbb";

/// Reads a name ("red", "rot", "gray", "violet", in any case), which stands for all colours that have it, and
/// "#rrggbb", which stands for all that look much like it (see likeDifference). Nothing for any other text.
[[nodiscard]] std::optional<ColorTest> parseColor(std::string_view text);

}  // namespace velamo
