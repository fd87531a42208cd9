#include "velamo/platform/corefoundation/string_object.h"

#include <cstdint>
#include <cstring>

using namespace velamo::corefoundation;

namespace {

/// The length of the UTF-8 sequence that the byte begins; 0 when none begins so.
std::size_t sequenceLength(std::uint8_t lead) noexcept {
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) return 2;
    if (lead >= 0xE0 && lead <= 0xEF) return 3;
    return lead >= 0xF0 && lead <= 0xF4 ? 4 : 0;
}

/// Whether the second byte may follow the first: not for surrogates, for more bytes than needed and past U+10FFFF.
bool mayFollow(std::uint8_t lead, std::uint8_t second) noexcept {
    switch (lead) {
        case 0xE0:
            return second >= 0xA0;
        case 0xED:
            return second < 0xA0;
        case 0xF0:
            return second >= 0x90;
        case 0xF4:
            return second < 0x90;
        default:
            return true;
    }
}

bool isSequence(std::string_view sequence, std::size_t length) noexcept {
    if (length == 0 || sequence.size() < length) return false;
    const auto byteAt = [&](std::size_t index) { return static_cast<std::uint8_t>(sequence[index]); };
    for (std::size_t index = 1; index < length; ++index)
        if ((byteAt(index) & 0xC0U) != 0x80) return false;
    return length == 1 || mayFollow(byteAt(0), byteAt(1));
}

bool isUtf8(std::string_view text) noexcept {
    while (!text.empty()) {
        const std::size_t length = sequenceLength(static_cast<std::uint8_t>(text.front()));
        if (!isSequence(text, length)) return false;
        text.remove_prefix(length);
    }
    return true;
}

CFStringRef create(std::string_view bytes) {
    return orNull([&]() -> CFStringRef { return new CFStringObject(bytes); });
}

Boolean copy(const std::string& bytes, char* buffer, CFIndex size) noexcept {
    if (size < 0 || bytes.size() >= static_cast<std::size_t>(size)) return false;
    std::memcpy(buffer, bytes.c_str(), bytes.size() + 1);
    return true;
}

}  // namespace

CFTypeID CFStringGetTypeID() {
    return static_cast<CFTypeID>(Type::string);
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* text, CFStringEncoding encoding) {
    return encoding == kCFStringEncodingUTF8 && isUtf8(text) ? create(text) : nullptr;
}

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex size, CFStringEncoding encoding) {
    return encoding == kCFStringEncodingUTF8 && isUtf8(string->bytes) && copy(string->bytes, buffer, size);
}

CFStringRef CFStringCreateWithFileSystemRepresentation(CFAllocatorRef, const char* path) {
    return create(path);
}

CFIndex CFStringGetMaximumSizeOfFileSystemRepresentation(CFStringRef string) {
    return static_cast<CFIndex>(string->bytes.size() + 1);
}

Boolean CFStringGetFileSystemRepresentation(CFStringRef string, char* buffer, CFIndex size) {
    return copy(string->bytes, buffer, size);
}

CFStringRef CFStringConstant(const char* text) {
    static auto& constants = *new Constants<std::string, CFStringObject>;
    return constants.of(text);
}
