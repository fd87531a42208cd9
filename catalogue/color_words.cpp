#include "catalogue/color_words.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string>
#include <vector>

#include "velamo/platform/graphics/color_difference.h"
#include "velamo/platform/text/search_words.h"

namespace velamo {
namespace {

struct OtherName {
    std::string_view text;
    std::string_view english;
};
constexpr std::array<OtherName, 5> otherNames{{
    {"gray", "grey"},
    {"violet", "purple"},
    {"lilac", "purple"},
    {"violett", "purple"},
    {"cyan", "turquoise"},
}};

/// Colours that nobody calls otherwise, dark and light ones, for each name in their order.
constexpr std::array<std::array<std::uint32_t, 5>, colorNames.size()> anchors{{
    {0x000000, 0x101820, 0x1C1C1C, 0x221E1E, 0x2A2522},  // black
    {0x505050, 0x708090, 0x808080, 0xB0B0B0, 0xD0D0D0},  // grey
    {0xFFFFFF, 0xF8F8FF, 0xFFFAF0, 0xF4F4F0, 0xF0F8FF},  // white
    {0x3D2010, 0x5C4033, 0x8B4513, 0x7B5B3A, 0xA0673B},  // brown
    {0xD2B48C, 0xE0CDA9, 0xE8D8B8, 0xF5F5DC, 0xFFE4C4},  // beige
    {0x9E7C0C, 0xB8860B, 0xC5942B, 0xCFA83A, 0xD4AF37},  // gold
    {0xFFD700, 0xFFE135, 0xFFFF00, 0xFFF380, 0xFFFA9E},  // yellow
    {0xE86100, 0xF28C28, 0xFF7F00, 0xFFA500, 0xFF9F60},  // orange
    {0x8B0000, 0xB22222, 0xC8102E, 0xFF0000, 0xE8503A},  // red
    {0xE8A0B0, 0xF78FA7, 0xFF9EB5, 0xFFC0CB, 0xFFDDE4},  // pink
    {0xA8005C, 0xC71585, 0xD6006E, 0xF0359A, 0xFF00FF},  // magenta
    {0x4B0082, 0x800080, 0x7D4FA8, 0x9370DB, 0xC8A2DC},  // purple
    {0x000080, 0x0000FF, 0x2B65C8, 0x1E90FF, 0x87CEEB},  // blue
    {0x006B6B, 0x008B8B, 0x00B5B8, 0x40E0D0, 0x7FE0D8},  // turquoise
    {0x006400, 0x00A000, 0x2E8B57, 0x32CD32, 0x90EE90},  // green
    {0x4E4E1A, 0x6B6B2A, 0x808000, 0x8A8A3C, 0xA5A050},  // olive
}};

struct Anchor {
    std::size_t name;
    LabColor color;
};
const std::vector<Anchor>& knownAnchors() {
    static const std::vector<Anchor> known = [] {
        std::vector<Anchor> made;
        for (std::size_t name = 0; name < anchors.size(); ++name)
            for (const std::uint32_t color : anchors.at(name)) made.push_back({name, labColor(color)});
        return made;
    }();
    return known;
}

std::optional<std::uint32_t> parseNumber(std::string_view text) {
    constexpr std::size_t digits = 6;
    constexpr int hexadecimal = 16;
    if (!text.starts_with('#') || text.size() != digits + 1) return std::nullopt;
    std::uint32_t color = 0;
    const auto [end, error] = std::from_chars(text.data() + 1, text.data() + text.size(), color, hexadecimal);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole ? std::optional(color) : std::nullopt;
}

std::optional<std::size_t> parseName(std::string_view text) {
    std::string folded = foldedForSearch(text);
    for (const auto& [other, english] : otherNames)
        if (folded == other) folded = english;
    const auto found = std::find_if(colorNames.begin(), colorNames.end(), [&folded](const ColorName& name) {
        return folded == name.english || folded == foldedForSearch(name.german);
    });
    if (found == colorNames.end()) return std::nullopt;
    return static_cast<std::size_t>(found - colorNames.begin());
}

}  // namespace

std::size_t colorNameOf(std::uint32_t color) {
    const LabColor lab = labColor(color);
    std::size_t name = 0;
    double nearest = std::numeric_limits<double>::infinity();
    for (const Anchor& anchor : knownAnchors()) {
        const double difference = colorDifference(lab, anchor.color);
        if (difference >= nearest) continue;
        nearest = difference;
        name = anchor.name;
    }
    return name;
}

std::optional<ColorTest> parseColor(std::string_view text) {
    if (const auto wanted = parseNumber(text))
        return [lab = labColor(*wanted)](std::uint32_t color) {
            return colorDifference(lab, labColor(color)) <= likeDifference;
        };
    if (const auto name = parseName(text)) return [name](std::uint32_t color) { return colorNameOf(color) == *name; };
    return std::nullopt;
}

}  // namespace velamo
