#include "platform/property_list.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <memory>
#include <numeric>

#include "platform/plist.h"

namespace velamo {

using Dictionary = PropertyList::Dictionary;

Dictionary::Dictionary(std::vector<Entry> entries) : entries_(std::move(entries)), byKey_(entries_.size()) {
    const auto keyOf = [&](std::size_t place) -> const std::string& { return entries_[place].first; };
    std::iota(byKey_.begin(), byKey_.end(), std::size_t{0});
    std::stable_sort(byKey_.begin(), byKey_.end(),
                     [&](std::size_t left, std::size_t right) { return keyOf(left) < keyOf(right); });
    const auto repeated = std::adjacent_find(
        byKey_.begin(), byKey_.end(), [&](std::size_t left, std::size_t right) { return keyOf(left) == keyOf(right); });
    if (repeated != byKey_.end()) dropRepeatedKeys();
}

Dictionary::Dictionary(std::initializer_list<Entry> entries) : Dictionary(std::vector<Entry>(entries)) {}

void Dictionary::dropRepeatedKeys() {
    std::vector<std::size_t> firstPlaces(entries_.size());
    for (std::size_t i = 0; i < byKey_.size(); ++i) {
        const bool isFirst = i == 0 || entries_[byKey_[i]].first != entries_[byKey_[i - 1]].first;
        firstPlaces[byKey_[i]] = isFirst ? byKey_[i] : firstPlaces[byKey_[i - 1]];
    }
    std::vector<Entry> kept;
    std::vector<std::size_t> keptPlaces(entries_.size());
    for (std::size_t place = 0; place < entries_.size(); ++place) {
        if (firstPlaces[place] == place) {
            keptPlaces[place] = kept.size();
            kept.push_back(std::move(entries_[place]));
        } else {
            kept[keptPlaces[firstPlaces[place]]].second = std::move(entries_[place].second);
        }
    }
    *this = Dictionary(std::move(kept));
}

std::vector<std::size_t>::const_iterator Dictionary::placeOf(std::string_view key) const noexcept {
    return std::lower_bound(byKey_.begin(), byKey_.end(), key,
                            [&](std::size_t place, std::string_view wanted) { return entries_[place].first < wanted; });
}

void Dictionary::emplace(std::string key, PropertyList value) {
    const auto place = placeOf(key);
    if (place != byKey_.end() && entries_[*place].first == key) return;
    byKey_.insert(place, entries_.size());
    entries_.emplace_back(std::move(key), std::move(value));
}

const PropertyList* Dictionary::find(std::string_view key) const noexcept {
    const auto place = placeOf(key);
    if (place == byKey_.end() || entries_[*place].first != key) return nullptr;
    return &entries_[*place].second;
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
    Number number{};
    if (first >= end) return std::nullopt;
    const auto [stop, error] = std::from_chars(text.data() + first, text.data() + end, number);
    if (error != std::errc() || stop != text.data() + end) return std::nullopt;
    return number;
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
        entries.emplace_back(key, valueOf(child));
    }
}

template <class Number>
Number numberOf(plist_t node, void (*getter)(plist_t, Number*)) {
    Number number{};
    getter(node, &number);
    return number;
}

PropertyList valueOf(plist_t node) {
    if (const auto reference = referenceOf(node)) return PropertyList(PropertyList::Uid{*reference});
    switch (plist_get_node_type(node)) {
        case PLIST_BOOLEAN:
            return PropertyList(numberOf(node, plist_get_bool_val) != 0);
        case PLIST_UINT:  // signed all the same: libplist keeps negative numbers in its unsigned ones
            return PropertyList(static_cast<std::int64_t>(numberOf(node, plist_get_uint_val)));
        case PLIST_REAL:
            return PropertyList(numberOf(node, plist_get_real_val));
        case PLIST_STRING:
            return PropertyList(textOfNode(node));
        case PLIST_DATA:
            return PropertyList(dataOf(node));
        case PLIST_ARRAY:
            return PropertyList(arrayOf(node));
        case PLIST_DICT:
            return PropertyList(dictionaryOf(node));
        default:
            return {};
    }
}

struct NodeOfValue {
    PlistOwner operator()(PropertyList::Other) const { return PlistOwner(plist_new_string("")); }
    PlistOwner operator()(bool value) const { return PlistOwner(plist_new_bool(value ? 1 : 0)); }
    PlistOwner operator()(std::int64_t value) const {
        return PlistOwner(plist_new_uint(static_cast<std::uint64_t>(value)));
    }
    PlistOwner operator()(double value) const { return PlistOwner(plist_new_real(value)); }
    PlistOwner operator()(const std::string& value) const {
        return PlistOwner(plist_new_string(plistText(value).c_str()));
    }
    PlistOwner operator()(const PropertyList::Data& value) const {
        return PlistOwner(plist_new_data(reinterpret_cast<const char*>(value.data()), value.size()));
    }
    PlistOwner operator()(PropertyList::Uid value) const { return PlistOwner(plist_new_uid(value.index)); }
    PlistOwner operator()(const PropertyList::Array& array) const {
        PlistOwner node(plist_new_array());
        for (const PropertyList& entry : array)
            plist_array_append_item(node.get(), std::visit(NodeOfValue(), entry.value()).release());
        return node;
    }
    PlistOwner operator()(const Dictionary& dictionary) const {
        PlistOwner node(plist_new_dict());
        for (const auto& [key, value] : dictionary)
            plist_dict_set_item(node.get(), plistText(key).c_str(), std::visit(NodeOfValue(), value.value()).release());
        return node;
    }
};

}  // namespace

std::optional<PropertyList> parsePropertyList(std::span<const std::uint8_t> bytes) {
    const PlistOwner root = parsePlist(bytes);
    return root ? std::optional(valueOf(root.get())) : std::nullopt;
}

std::vector<std::uint8_t> xmlPropertyList(const PropertyList& root) {
    return xmlOf(std::visit(NodeOfValue(), root.value()).get());
}

std::vector<std::uint8_t> binaryPropertyList(const PropertyList& root) {
    return binaryOf(std::visit(NodeOfValue(), root.value()).get());
}

}  // namespace velamo
