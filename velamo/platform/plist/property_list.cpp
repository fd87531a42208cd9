#include "velamo/platform/plist/property_list.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <map>
#include <memory>
#include <stdexcept>

#include "velamo/platform/plist/plist.h"
#include "velamo/platform/text/plain_number.h"
#include "velamo/platform/text/text.h"

namespace velamo {

using Dictionary = PropertyList::Dictionary;

Dictionary::Dictionary(std::vector<Entry> entries) {
    std::map<std::string, std::size_t> places;
    for (Entry& entry : entries) {
        const auto [known, isNew] = places.try_emplace(entry.first, entries_.size());
        if (isNew)
            entries_.push_back(std::move(entry));
        else
            entries_[known->second].second = std::move(entry.second);
    }
}

Dictionary::Dictionary(std::initializer_list<Entry> entries) : Dictionary(std::vector<Entry>(entries)) {}

void Dictionary::emplace(std::string key, PropertyList value) {
    if (find(key) == nullptr) entries_.emplace_back(std::move(key), std::move(value));
}

const PropertyList* Dictionary::find(std::string_view key) const noexcept {
    const auto found =
        std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) { return entry.first == key; });
    return found == entries_.end() ? nullptr : &found->second;
}

bool operator==(const Dictionary& left, const Dictionary& right) {
    return left.entries_ == right.entries_;
}

const PropertyList* PropertyList::find(std::string_view key) const noexcept {
    const auto* dictionary = as<Dictionary>();
    return dictionary == nullptr ? nullptr : dictionary->find(key);
}

namespace {

template <class Number>
std::optional<Number> numberFrom(const std::string& text) {
    const std::size_t first = std::min(text.find_first_not_of(" \t\r\n"), text.size());
    const std::size_t end = text.find_last_not_of(" \t\r\n") + 1;
    return first < end ? plainNumber<Number>(std::string_view(text).substr(first, end - first)) : std::nullopt;
}

std::optional<std::int64_t> narrowed(double value) {
    constexpr double limit = 0x1p63;
    if (!(value >= -limit && value < limit)) return std::nullopt;  // NaN as well
    return static_cast<std::int64_t>(value);
}

}  // namespace

std::optional<double> PropertyList::number() const {
    if (const auto* boolean = as<bool>()) return *boolean ? 1 : 0;
    if (const auto* integer = as<std::int64_t>()) return static_cast<double>(*integer);
    if (const auto* real = as<double>()) return *real;
    if (const auto* text = as<std::string>()) return numberFrom<double>(*text);
    return std::nullopt;
}

std::optional<std::int64_t> PropertyList::integer() const {
    if (const auto* integer = as<std::int64_t>()) return *integer;  // a double would lose its low bits
    if (const auto* text = as<std::string>()) {
        if (const auto integer = numberFrom<std::int64_t>(*text)) return integer;
    }
    const auto real = number();
    return real ? narrowed(*real) : std::nullopt;
}

namespace {

PropertyList valueOf(plist_t node);

PropertyList::Data dataOf(plist_t node) {
    std::uint64_t size = 0;
    const char* bytes = plist_get_data_ptr(node, &size);
    return {bytes, bytes + size};
}

PropertyList::Array arrayOf(plist_t node) {
    PropertyList::Array entries;
    for (const plist_t child : childrenOf(node)) entries.push_back(valueOf(child));
    return entries;
}

Dictionary dictionaryOf(plist_t node) {
    std::vector<Dictionary::Entry> entries;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    const std::unique_ptr<void, decltype(&std::free)> owner(iterator, &std::free);
    for (;;) {
        char* key = nullptr;
        plist_t child = nullptr;
        plist_dict_next_item(node, iterator, &key, &child);
        const std::unique_ptr<char, decltype(&std::free)> ownedKey(key, &std::free);
        if (child == nullptr) return Dictionary(std::move(entries));
        entries.emplace_back(validUtf8(key), valueOf(child));
    }
}

template <class Number>
Number numberOf(plist_t node, void (*getter)(plist_t, Number*)) {
    Number number{};
    getter(node, &number);
    return number;
}

PropertyList containerOf(plist_t node) {
    if (const auto reference = referenceOfNode(node)) return PropertyList(PropertyList::Uid{*reference});
    return PropertyList(dictionaryOf(node));
}

PropertyList valueOf(plist_t node) {
    switch (plist_get_node_type(node)) {
        case PLIST_BOOLEAN:
            return PropertyList(numberOf(node, plist_get_bool_val) != 0);
        case PLIST_UINT: {
            const auto integer = integerOfNode(node);
            return integer ? PropertyList(*integer) : PropertyList();
        }
        case PLIST_REAL:
            return PropertyList(numberOf(node, plist_get_real_val));
        case PLIST_STRING:
            return PropertyList(textOfNode(node));
        case PLIST_DATA:
            return PropertyList(dataOf(node));
        case PLIST_ARRAY:
            return PropertyList(arrayOf(node));
        case PLIST_UID:
        case PLIST_DICT:
            return containerOf(node);
        default:
            return {};
    }
}

/// Builds libplist's node of a value.
class NodeOf {
public:
    explicit NodeOf(PlistForm form) noexcept : form_(form) {}

    PlistOwner operator()(const PropertyList& value) const { return std::visit(*this, value.value()); }
    PlistOwner operator()(PropertyList::Other /*value*/) const { return PlistOwner(plist_new_string("")); }
    PlistOwner operator()(bool value) const { return PlistOwner(plist_new_bool(value ? 1 : 0)); }
    // In two's complement, which libplist writes with its sign.
    PlistOwner operator()(std::int64_t value) const {
        return PlistOwner(plist_new_uint(static_cast<std::uint64_t>(value)));
    }
    PlistOwner operator()(double value) const { return PlistOwner(plist_new_real(value)); }
    PlistOwner operator()(const std::string& value) const {
        return PlistOwner(plist_new_string(plistText(value, form_).c_str()));
    }
    PlistOwner operator()(const PropertyList::Data& value) const {
        // A counter of libplist's has 32 bits and would never come to the end.
        if (value.size() > std::numeric_limits<std::uint32_t>::max()) throw std::length_error("The data are too long.");
        return PlistOwner(plist_new_data(reinterpret_cast<const char*>(value.data()), value.size()));
    }
    PlistOwner operator()(PropertyList::Uid value) const { return PlistOwner(plist_new_uid(value.index)); }
    PlistOwner operator()(const PropertyList::Array& array) const {
        PlistOwner node(plist_new_array());
        for (const PropertyList& entry : array) plist_array_append_item(node.get(), (*this)(entry).release());
        return node;
    }
    PlistOwner operator()(const Dictionary& dictionary) const {
        PlistOwner node(plist_new_dict());
        for (const auto& [key, value] : dictionary)
            plist_dict_set_item(node.get(), plistText(key, form_).c_str(), (*this)(value).release());
        return node;
    }

private:
    PlistForm form_;
};

std::vector<std::uint8_t> bytesOf(const PropertyList& root, PlistForm form) {
    return plistBytes(NodeOf(form)(root), form);
}

}  // namespace

std::optional<PropertyList> parsePropertyList(std::span<const std::uint8_t> bytes) {
    const PlistOwner root = parsePlist(bytes);
    return root ? std::optional(valueOf(root.get())) : std::nullopt;
}

std::vector<std::uint8_t> xmlPropertyList(const PropertyList& root) {
    return bytesOf(root, PlistForm::xml);
}

std::vector<std::uint8_t> binaryPropertyList(const PropertyList& root) {
    return bytesOf(root, PlistForm::binary);
}

}  // namespace velamo
