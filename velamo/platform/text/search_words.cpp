#include "velamo/platform/text/search_words.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstdint>
#include <new>

#include "velamo/platform/text/text.h"
#include "velamo/platform/text/utf8_characters.h"

namespace velamo {
namespace {

bool isAscii(std::string_view text) noexcept {
    return std::all_of(text.begin(), text.end(), [](char letter) { return static_cast<unsigned char>(letter) < 0x80; });
}

std::size_t columnsOf(UChar32 character) {
    if (character < 0) return 1;  // shown as the sign for what is no text
    const int category = u_charType(character);
    if (category == U_NON_SPACING_MARK || category == U_ENCLOSING_MARK || category == U_FORMAT_CHAR) return 0;
    const int width = u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

/// Whether it is one of the accents that Latin, Greek and Cyrillic letters have. The marks of other scripts make other
/// letters.
bool isAccent(char16_t unit) noexcept {
    return unit >= 0x0300 && unit <= 0x036F;
}

icu::UnicodeString withoutAccents(const icu::UnicodeString& text, UErrorCode& status) {
    const icu::Normalizer2* apart = icu::Normalizer2::getNFDInstance(status);
    const icu::Normalizer2* together = icu::Normalizer2::getNFCInstance(status);
    if (U_FAILURE(status)) return text;
    const auto letters = apart->normalize(text, status);
    icu::UnicodeString bare;
    for (std::int32_t i = 0; i < letters.length(); ++i)
        if (!isAccent(letters[i])) bare.append(letters[i]);
    return together->normalize(bare, status);
}

/// The text without case, and then as `further` makes it.
template <class Further>
std::string folded(std::string_view text, const Further& further) {
    std::string folded(text);
    if (isAscii(text)) {  // nearly all names, and in an eighth of the time
        std::transform(folded.begin(), folded.end(), folded.begin(), lowerCase);
        return folded;
    }
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* normalizer = icu::Normalizer2::getNFKCCasefoldInstance(status);
    if (U_FAILURE(status)) return folded;
    const auto source = icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
    const auto normal = further(normalizer->normalize(source, status), status);
    if (U_FAILURE(status)) throw std::bad_alloc();
    folded.clear();
    normal.toUTF8String(folded);
    return folded;
}

}  // namespace

std::string foldedName(std::string_view text) {
    return folded(text, [](const icu::UnicodeString& name, UErrorCode&) { return name; });
}

std::string foldedForSearch(std::string_view text) {
    return folded(text, withoutAccents);
}

std::size_t columnsOf(std::string_view text) {
    std::size_t columns = 0;
    while (!text.empty()) columns += columnsOf(takeCharacter(text).code);
    return columns;
}

}  // namespace velamo
