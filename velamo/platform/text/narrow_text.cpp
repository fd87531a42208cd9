#include "velamo/platform/text/narrow_text.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <new>

namespace velamo {
namespace {

constexpr UChar32 lastOfAscii = 0x7F;
constexpr UChar32 lastOfLatin1 = 0xFF;

/// The normalizers live as long as the library.
const icu::Normalizer2& composing() {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* normalizer = icu::Normalizer2::getNFCInstance(status);
    if (U_FAILURE(status)) throw std::bad_alloc();
    return *normalizer;
}
const icu::Normalizer2& decomposing() {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* normalizer = icu::Normalizer2::getNFKDInstance(status);
    if (U_FAILURE(status)) throw std::bad_alloc();
    return *normalizer;
}

/// Signs that only change the character before them, or nothing that one sees.
bool isMark(UChar32 character) {
    constexpr unsigned marks = U_GC_M_MASK | U_GC_CF_MASK;
    return (U_GET_GC_MASK(character) & marks) != 0;
}

/// A character that does not fit, by its parts.
std::string replacementOf(UChar32 character, UChar32 last) {
    icu::UnicodeString parts;
    if (!decomposing().getDecomposition(character, parts)) parts = character;
    std::string replacement;
    for (std::int32_t i = 0; i < parts.length(); i = parts.moveIndex32(i, 1)) {
        const UChar32 part = parts.char32At(i);
        if (isMark(part)) continue;
        replacement += part <= last ? static_cast<char>(part) : '?';
    }
    return replacement;
}

std::string narrowed(std::string_view text, UChar32 last) {
    UErrorCode status = U_ZERO_ERROR;
    const auto composed = composing().normalize(
        icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())}), status);
    if (U_FAILURE(status)) throw std::bad_alloc();
    std::string bytes;
    for (std::int32_t i = 0; i < composed.length(); i = composed.moveIndex32(i, 1)) {
        const UChar32 character = composed.char32At(i);
        if (character <= last)
            bytes += static_cast<char>(character);
        else
            bytes += replacementOf(character, last);
    }
    return bytes;
}

}  // namespace

std::string asciiFromText(std::string_view text) {
    return narrowed(text, lastOfAscii);
}

std::string latin1FromText(std::string_view text) {
    return narrowed(text, lastOfLatin1);
}

}  // namespace velamo
