#include "velamo/platform/plist/plist.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>

#include "velamo/platform/plist/plist_guard.h"
#include "velamo/platform/text/plain_locale.h"
#include "velamo/platform/text/text.h"

namespace velamo {
namespace {

/// libplist reads and writes numbers by the locale of the thread, in which a comma may stand for the point.
class PlainNumbers {
public:
    PlainNumbers() noexcept : former_(::uselocale(plainLocale())) {}
    ~PlainNumbers() { ::uselocale(former_); }
    PlainNumbers(const PlainNumbers&) = delete;
    PlainNumbers& operator=(const PlainNumbers&) = delete;

private:
    locale_t former_;
};

/// What libplist writes into; both of its ways to free it are free().
struct Buffer {
    char* bytes = nullptr;
    std::uint32_t size = 0;
    Buffer() = default;
    ~Buffer() { plist_to_xml_free(bytes); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
};

std::uint64_t bigEndian(const char* bytes, std::size_t width) noexcept {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < width; ++i) value = value << 8 | static_cast<unsigned char>(bytes[i]);
    return value;
}

/// Whether the size is that of all the bytes: libplist counts in 32 bits and passes over what is above.
bool isWhole(const Buffer& buffer, PlistForm form) noexcept {
    if (form == PlistForm::xml) return std::strlen(buffer.bytes) == buffer.size;
    constexpr std::size_t trailerSize = 32;  // width of an offset at 6, number of offsets at 8, their place at 24
    const char* trailer = buffer.bytes + buffer.size - trailerSize;
    const std::uint64_t offsets = bigEndian(trailer + 6, 1) * bigEndian(trailer + 8, 8);
    return bigEndian(trailer + 24, 8) + offsets + trailerSize == buffer.size;
}

bool isXmlControl(char character) noexcept {
    return static_cast<unsigned char>(character) < ' ' && character != '\t' && character != '\n' && character != '\r';
}

void replaceAll(std::string& text, std::string_view part, std::string_view replacement) {
    for (std::size_t place = text.find(part); place != text.npos; place = text.find(part, place + replacement.size()))
        text.replace(place, part.size(), replacement);
}

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view replacement = "\uFFFD";

}  // namespace

PlistOwner parsePlist(std::span<const std::uint8_t> bytes) {
    std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (text.size() > std::numeric_limits<std::uint32_t>::max()) return nullptr;
    const bool isBinary = text.starts_with("bplist");
    if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
    if (isBinary ? !isSafeBinaryPlist(bytes) : !isSafeXmlPlist(text)) return nullptr;
    const PlainNumbers plainNumbers;
    plist_t root = nullptr;
    (isBinary ? plist_from_bin : plist_from_xml)(text.data(), static_cast<std::uint32_t>(text.size()), &root);
    return PlistOwner(root);
}

std::vector<std::uint8_t> plistBytes(PlistOwner root, PlistForm form) {
    const PlainNumbers plainNumbers;
    Buffer buffer;
    (form == PlistForm::xml ? plist_to_xml : plist_to_bin)(root.get(), &buffer.bytes, &buffer.size);
    root.reset();
    if (buffer.bytes == nullptr) throw std::bad_alloc();
    if (!isWhole(buffer, form)) throw std::length_error("The property list is larger than 4 GB.");
    return {buffer.bytes, buffer.bytes + buffer.size};
}

std::string plistText(std::string_view text, PlistForm form) {
    std::string valid;
    for (const char character : validUtf8(text)) {
        const bool isUnknown = character == '\0' || (form == PlistForm::xml && isXmlControl(character));
        valid.append(isUnknown ? replacement : std::string_view(&character, 1));
    }
    if (form == PlistForm::xml) {
        for (const std::string_view noCharacter : {"\uFFFE", "\uFFFF"}) replaceAll(valid, noCharacter, replacement);
    }
    return valid;
}

std::string textOfNode(plist_t node) {
    std::uint64_t size = 0;
    const char* text = plist_get_string_ptr(node, &size);
    return text == nullptr ? "" : validUtf8({text, size});
}

std::optional<std::int64_t> integerOfNode(plist_t node) {
    if (plist_get_node_type(node) != PLIST_UINT) return std::nullopt;
    std::uint64_t value = 0;
    plist_get_uint_val(node, &value);
    // libplist tells a negative number from one of 64 unsigned bits by a width that only a comparison shows.
    const auto number = static_cast<std::int64_t>(value);
    const PlistOwner negative(number < 0 ? plist_new_uint(value) : nullptr);
    if (negative && plist_compare_node_value(node, negative.get()) == 0) return std::nullopt;
    return number;
}

std::optional<std::uint32_t> referenceOfNode(plist_t node) {
    if (plist_get_node_type(node) == PLIST_UID) {
        std::uint64_t place = 0;
        plist_get_uid_val(node, &place);
        return static_cast<std::uint32_t>(place);  // libplist reads none of more bits
    }
    if (plist_dict_get_size(node) != 1) return std::nullopt;
    const auto place = integerOfNode(plist_dict_get_item(node, "CF$UID"));
    if (!place || *place < 0 || *place > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
    return static_cast<std::uint32_t>(*place);
}

std::vector<plist_t> childrenOf(plist_t array) {
    std::vector<plist_t> children;
    if (plist_get_node_type(array) != PLIST_ARRAY) return children;
    children.reserve(plist_array_get_size(array));
    plist_array_iter iterator = nullptr;
    plist_array_new_iter(array, &iterator);
    const std::unique_ptr<void, decltype(&std::free)> owner(iterator, &std::free);
    plist_t child = nullptr;
    for (plist_array_next_item(array, iterator, &child); child != nullptr;
         plist_array_next_item(array, iterator, &child)) {
        children.push_back(child);
    }
    return children;
}

}  // namespace velamo
