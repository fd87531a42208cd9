#pragma once

#include <unicode/utf8.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace velamo {

/// A character of a text, or one byte or more that are none.
struct Utf8Character {
    std::int32_t code = -1;  // negative: not UTF-8
    std::string_view bytes;
};

/// Takes the first character off a text that is not empty. For the files of this folder alone.
[[nodiscard]] inline Utf8Character takeCharacter(std::string_view& text) noexcept {
    constexpr std::size_t longest = 4;
    const auto start = text.substr(0, longest);
    std::int32_t length = 0;
    Utf8Character character;
// The library's macro narrows on purpose.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
    U8_NEXT(start.data(), length, static_cast<std::int32_t>(start.size()), character.code);
#pragma GCC diagnostic pop
    character.bytes = text.substr(0, static_cast<std::size_t>(length));
    text.remove_prefix(character.bytes.size());
    return character;
}

}  // namespace velamo
