#include "velamo/platform/corefoundation/uuid_object.h"

#include <charconv>
#include <optional>

#include "velamo/platform/corefoundation/string_object.h"

using namespace velamo::corefoundation;

static_assert(sizeof(CFUUIDBytes) == sizeof(UuidBytes));

namespace {

constexpr std::string_view shape = "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX";

std::optional<UInt8> byteOf(std::string_view twoDigits) noexcept {
    UInt8 byte = 0;
    const auto result = std::from_chars(twoDigits.data(), twoDigits.data() + twoDigits.size(), byte, 16);
    return result.ptr == twoDigits.data() + twoDigits.size() ? std::optional(byte) : std::nullopt;
}

std::optional<UuidBytes> bytesOf(std::string_view text) noexcept {
    if (text.size() != shape.size()) return std::nullopt;
    UuidBytes bytes{};
    std::size_t count = 0;
    for (std::size_t position = 0; position < shape.size();) {
        if (shape[position] == '-') {
            if (text[position++] != '-') return std::nullopt;
            continue;
        }
        const auto byte = byteOf(text.substr(position, 2));
        if (!byte) return std::nullopt;
        bytes[count++] = *byte;
        position += 2;
    }
    return bytes;
}

CFUUIDRef create(const UuidBytes& bytes) {
    return orNull([&]() -> CFUUIDRef { return new CFUUIDObject(bytes); });
}

}  // namespace

CFTypeID CFUUIDGetTypeID() {
    return static_cast<CFTypeID>(Type::uuid);
}

CFUUIDRef CFUUIDCreateFromUUIDBytes(CFAllocatorRef, CFUUIDBytes bytes) {
    return create(std::bit_cast<UuidBytes>(bytes));
}

CFUUIDRef CFUUIDCreateFromString(CFAllocatorRef, CFStringRef text) {
    const auto bytes = bytesOf(text->bytes);
    return bytes ? create(*bytes) : nullptr;
}

CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid) {
    return std::bit_cast<CFUUIDBytes>(uuid->bytes);
}

CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFAllocatorRef, UInt8 byte0, UInt8 byte1, UInt8 byte2, UInt8 byte3,
                                         UInt8 byte4, UInt8 byte5, UInt8 byte6, UInt8 byte7, UInt8 byte8, UInt8 byte9,
                                         UInt8 byte10, UInt8 byte11, UInt8 byte12, UInt8 byte13, UInt8 byte14,
                                         UInt8 byte15) {
    static auto& constants = *new Constants<UuidBytes, CFUUIDObject>;
    return constants.of({byte0, byte1, byte2, byte3, byte4, byte5, byte6, byte7, byte8, byte9, byte10, byte11, byte12,
                         byte13, byte14, byte15});
}
