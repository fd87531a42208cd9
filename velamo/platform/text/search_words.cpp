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

}  // namespace

std::string foldedForSearch(std::string_view text) {
    std::string folded(text);
    if (isAscii(text)) {  // nearly all names, and in an eighth of the time
        std::transform(folded.begin(), folded.end(), folded.begin(), lowerCase);
        return folded;
    }
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* normalizer = icu::Normalizer2::getNFKCCasefoldInstance(status);
    if (U_FAILURE(status)) return folded;
    const auto normal = normalizer->normalize(
        icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())}), status);
    if (U_FAILURE(status)) throw std::bad_alloc();
    folded.clear();
    normal.toUTF8String(folded);
    return folded;
}

std::size_t columnsOf(std::string_view text) {
    std::size_t columns = 0;
    while (!text.empty()) columns += columnsOf(takeCharacter(text).code);
    return columns;
}

}  // namespace velamo
