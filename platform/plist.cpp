#include "platform/plist.h"

#include <locale.h>
#include <clocale>
#include <cstdlib>
#include <limits>
#include <new>

#include "platform/plist_guard.h"
#include "platform/text.h"

namespace velamo {
namespace {

/// libplist reads and writes numbers by the locale of the thread, in which a comma may stand for the point.
class PlainNumbers {
public:
    PlainNumbers() noexcept : former_(::uselocale(plain())) {}
    ~PlainNumbers() { ::uselocale(former_); }
    PlainNumbers(const PlainNumbers&) = delete;
    PlainNumbers& operator=(const PlainNumbers&) = delete;

private:
    static locale_t plain() noexcept {
        static const locale_t plainLocale = ::newlocale(LC_ALL_MASK, "C", nullptr);
        return plainLocale;
    }
    locale_t former_;
};

struct Buffer {
    char* bytes = nullptr;
    std::uint32_t size = 0;
    Buffer() = default;
    ~Buffer() { std::free(bytes); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
};

using Writer = void (*)(plist_t, char**, std::uint32_t*);

std::vector<std::uint8_t> written(plist_t root, Writer writer) {
    const PlainNumbers plainNumbers;
    Buffer buffer;
    writer(root, &buffer.bytes, &buffer.size);
    if (buffer.bytes == nullptr) throw std::bad_alloc();
    return {buffer.bytes, buffer.bytes + buffer.size};
}

bool isXmlCharacter(char character) noexcept {
    return static_cast<unsigned char>(character) >= ' ' || character == '\t' || character == '\n' || character == '\r';
}

}  // namespace

PlistOwner parsePlist(std::span<const std::uint8_t> bytes) {
    if (bytes.size() > std::numeric_limits<std::uint32_t>::max()) return nullptr;
    std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.substr(0, byteOrderMark.size()) == byteOrderMark) text.remove_prefix(byteOrderMark.size());
    const bool isBinary = text.substr(0, 6) == "bplist";
    if (isBinary ? !isSafeBinaryPlist(bytes) : !isSafeXmlPlist(text)) return nullptr;
    const PlainNumbers plainNumbers;
    plist_t root = nullptr;
    (isBinary ? plist_from_bin : plist_from_xml)(text.data(), static_cast<std::uint32_t>(text.size()), &root);
    return PlistOwner(root);
}

std::vector<std::uint8_t> xmlOf(plist_t root) {
    return written(root, plist_to_xml);
}

std::vector<std::uint8_t> binaryOf(plist_t root) {
    return written(root, plist_to_bin);
}

std::string plistText(std::string_view text) {
    std::string valid = validUtf8(text);
    for (std::size_t i = 0; i < valid.size(); ++i) {
        if (!isXmlCharacter(valid[i])) valid.replace(i, 1, "\uFFFD");
    }
    return valid;
}

std::string textOfNode(plist_t node) {
    std::uint64_t size = 0;
    const char* text = plist_get_string_ptr(node, &size);
    return text == nullptr ? "" : validUtf8({text, size});
}

std::optional<std::uint64_t> referenceOf(plist_t node) noexcept {
    std::uint64_t reference = 0;
    if (plist_get_node_type(node) == PLIST_UID) {
        plist_get_uid_val(node, &reference);
        return reference;
    }
    if (plist_get_node_type(node) != PLIST_DICT || plist_dict_get_size(node) != 1) return std::nullopt;
    const plist_t number = plist_dict_get_item(node, "CF$UID");
    if (plist_get_node_type(number) != PLIST_UINT) return std::nullopt;
    plist_get_uint_val(number, &reference);
    return reference;
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
