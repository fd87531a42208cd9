#include "velamo/platform/archives/member_names.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/ucsdet.h>
#include <unicode/unistr.h>
#include <unicode/uscript.h>

#include <algorithm>
#include <array>
#include <memory>
#include <new>

namespace velamo {
namespace {

constexpr const char* japanese = "Shift_JIS";
constexpr const char* oldZip = "ibm-437";
constexpr const char* western = "windows-1252";

/// What the detector may name besides. (It also knows encodings that no archive has, such as those of mainframes.)
constexpr std::array<std::string_view, 12> otherEncodings{"windows-1250", "windows-1251", "windows-1253", "ISO-8859-2",
                                                          "ISO-8859-5",   "ISO-8859-7",   "KOI8-R",       "EUC-JP",
                                                          "EUC-KR",       "Big5",         "GB18030",      japanese};

/// More tell no more, and take time.
constexpr std::size_t mostBytesToDetect = 256;

bool isHigh(char byte) noexcept {
    return static_cast<unsigned char>(byte) >= 0x80;
}

template <class Wanted>
bool allHighBytes(std::string_view bytes, Wanted wanted) {
    return std::all_of(bytes.begin(), bytes.end(),
                       [&](char byte) { return !isHigh(byte) || wanted(static_cast<unsigned char>(byte)); });
}

/// Letters of code page 437, and the fractions that tell sizes; its other high bytes are lines, Greek and mathematics.
bool isLetterOfOldZip(unsigned char byte) noexcept {
    constexpr unsigned char sharpS = 0xE1;
    return byte <= 0x9A || (byte >= 0xA0 && byte <= 0xA5) || byte == 0xAB || byte == 0xAC || byte == sharpS;
}
/// Letters of Latin-1, the fractions and the degree.
bool isLetterOfLatin1(unsigned char byte) noexcept {
    return (byte >= 0xC0 && byte != 0xD7 && byte != 0xF7) || (byte >= 0xBC && byte <= 0xBE) || byte == 0xB0;
}

/// The bytes as text, or nothing where some are none in that encoding.
std::optional<icu::UnicodeString> decoded(std::string_view bytes, const char* encoding) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UConverter, decltype(&ucnv_close)> converter(ucnv_open(encoding, &status), ucnv_close);
    if (U_FAILURE(status)) return std::nullopt;
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    icu::UnicodeString text;
    const auto room = static_cast<std::int32_t>(2 * bytes.size() + 2);
    char16_t* units = text.getBuffer(room);
    if (units == nullptr) throw std::bad_alloc();
    const std::int32_t length =
        ucnv_toUChars(converter.get(), units, room, bytes.data(), static_cast<std::int32_t>(bytes.size()), &status);
    text.releaseBuffer(U_SUCCESS(status) ? length : 0);
    return U_SUCCESS(status) ? std::optional(text) : std::nullopt;
}

bool isJapaneseLetter(UChar32 character) {
    UErrorCode status = U_ZERO_ERROR;
    const UScriptCode script = uscript_getScript(character, &status);
    constexpr UChar32 longVowel = 0x30FC;
    return script == USCRIPT_HAN || script == USCRIPT_HIRAGANA || script == USCRIPT_KATAKANA || character == longVowel;
}

/// Whether two letters of two bytes each stand side by side: a single one may be an umlaut and the letter behind it.
bool hasJapaneseWord(const icu::UnicodeString& text) {
    constexpr UChar32 halfWidth = 0xFF00;
    int run = 0;
    for (std::int32_t i = 0; i < text.length() && run < 2; i = text.moveIndex32(i, 1)) {
        const UChar32 character = text.char32At(i);
        run = isJapaneseLetter(character) && character < halfWidth ? run + 1 : 0;
    }
    return run == 2;
}

/// The most likely one of the other encodings.
std::optional<icu::UnicodeString> detected(std::string_view bytes) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UCharsetDetector, decltype(&ucsdet_close)> detector(ucsdet_open(&status), ucsdet_close);
    if (U_FAILURE(status)) return std::nullopt;
    const std::string_view start = bytes.substr(0, mostBytesToDetect);
    ucsdet_setText(detector.get(), start.data(), static_cast<std::int32_t>(start.size()), &status);
    std::int32_t count = 0;
    const UCharsetMatch** matches = ucsdet_detectAll(detector.get(), &count, &status);
    for (std::int32_t i = 0; U_SUCCESS(status) && i < count; ++i) {
        const char* encoding = ucsdet_getName(matches[i], &status);
        if (U_FAILURE(status)) break;
        if (std::find(otherEncodings.begin(), otherEncodings.end(), encoding) == otherEncodings.end()) continue;
        if (auto text = decoded(bytes, encoding)) return text;
    }
    return std::nullopt;
}

/// Names in Latin letters have some high bytes among many others; in other scripts nearly all letters are such.
bool hasFewHighBytes(std::string_view bytes) {
    const std::string_view stem = bytes.substr(0, bytes.rfind('.'));
    return 2 * std::count_if(stem.begin(), stem.end(), isHigh) <= static_cast<std::ptrdiff_t>(stem.size()) + 1;
}

icu::UnicodeString decodedSomehow(std::string_view bytes) {
    const auto asJapanese = decoded(bytes, japanese);
    if (asJapanese && hasJapaneseWord(*asJapanese)) return *asJapanese;
    if (allHighBytes(bytes, isLetterOfOldZip))
        if (auto text = decoded(bytes, oldZip)) return *text;
    if (allHighBytes(bytes, isLetterOfLatin1) && hasFewHighBytes(bytes))
        if (auto text = decoded(bytes, western)) return *text;
    if (auto text = detected(bytes)) return *text;
    if (auto text = decoded(bytes, oldZip)) return *text;
    return icu::UnicodeString::fromUTF8({bytes.data(), static_cast<std::int32_t>(bytes.size())});
}

std::string composed(const icu::UnicodeString& text) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* normalizer = icu::Normalizer2::getNFCInstance(status);
    if (U_FAILURE(status)) throw std::bad_alloc();
    std::string result;
    normalizer->normalize(text, status).toUTF8String(result);
    if (U_FAILURE(status)) throw std::bad_alloc();
    return result;
}

}  // namespace

std::string textOfName(std::string_view bytes) {
    if (std::none_of(bytes.begin(), bytes.end(), isHigh)) return std::string(bytes);
    const auto asUtf8 = decoded(bytes, "UTF-8");
    return composed(asUtf8 ? *asUtf8 : decodedSomehow(bytes));
}

std::optional<std::string> locationOf(std::string_view name) {
    if (name.starts_with('/')) return std::nullopt;
    std::string location;
    while (!name.empty()) {
        const std::string_view part = name.substr(0, name.find('/'));
        name.remove_prefix(std::min(part.size() + 1, name.size()));
        if (part == "..") return std::nullopt;
        if (part.empty() || part == ".") continue;
        location += (location.empty() ? "" : "/") + std::string(part);
    }
    return location;
}

bool isHidden(std::string_view location) noexcept {
    while (!location.empty()) {
        const std::string_view part = location.substr(0, location.find('/'));
        location.remove_prefix(std::min(part.size() + 1, location.size()));
        if (part == "__MACOSX" || part.starts_with('.')) return true;
    }
    return false;
}

}  // namespace velamo
