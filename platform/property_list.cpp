#include "platform/property_list.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>

#include "platform/binary_list.h"
#include "platform/xml_list.h"

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

using Kind = BinaryList::Kind;
using Object = BinaryList::Object;

// What a list may unfold to, so that its memory stays in proportion to its bytes: an ordinary list names the same few
// keys and values again and again in one or two bytes each, a hostile one its containers.
constexpr std::size_t unfoldingPerByte = 64;
constexpr std::size_t costOfValue = 16;

bool isContainer(const Object& object) {
    return object.kind == Kind::array || object.kind == Kind::dictionary;
}

std::size_t referenceCount(const Object& container) {
    return container.kind == Kind::dictionary ? 2 * container.count : container.count;
}

// Follows every reference as building does, and gives up where the list is damaged, too deep (or circular) or too big.
class Unfolding {
public:
    explicit Unfolding(const BinaryList& list) noexcept
        : list_(&list), allowance_(list.byteCount() * unfoldingPerByte) {}

    bool isAllowed(std::uint64_t index, int depth) {
        const auto object = list_->object(index);
        if (!object || !spend(costOfValue + (isContainer(*object) ? 0 : object->body.size()))) return false;
        if (!isContainer(*object)) return true;
        if (depth > deepestNesting || !areKeysTexts(*object)) return false;
        for (std::size_t place = 0; place < referenceCount(*object); ++place) {
            if (!isAllowed(list_->reference(*object, place), depth + 1)) return false;
        }
        return true;
    }

private:
    bool spend(std::size_t cost) {
        if (cost > allowance_) return false;
        allowance_ -= cost;
        return true;
    }

    bool areKeysTexts(const Object& container) const {
        if (container.kind != Kind::dictionary) return true;
        for (std::size_t place = 0; place < container.count; ++place) {
            const auto key = list_->object(list_->reference(container, place));
            if (!key || !key->isText()) return false;
        }
        return true;
    }

    const BinaryList* list_;
    std::size_t allowance_;
};

PropertyList integerValue(const Object& object) {
    const auto value = integerOf(object);
    return value ? PropertyList(*value) : PropertyList();
}

PropertyList build(const BinaryList& list, std::uint64_t index);

PropertyList buildArray(const BinaryList& list, const Object& object) {
    PropertyList::Array entries;
    entries.reserve(object.count);
    for (std::size_t i = 0; i < object.count; ++i) entries.push_back(build(list, list.reference(object, i)));
    return PropertyList(std::move(entries));
}

PropertyList buildDictionary(const BinaryList& list, const Object& object) {
    std::vector<Dictionary::Entry> entries;
    entries.reserve(object.count);
    for (std::size_t i = 0; i < object.count; ++i) {
        const Object key = list.object(list.reference(object, i)).value_or(Object{});
        entries.emplace_back(textOf(key), build(list, list.reference(object, object.count + i)));
    }
    return PropertyList(Dictionary(std::move(entries)));
}

// Of a list whose unfolding is allowed.
PropertyList build(const BinaryList& list, std::uint64_t index) {
    const Object object = list.object(index).value_or(Object{});
    switch (object.kind) {
        case Kind::boolean:
            return PropertyList(object.count == 1);
        case Kind::integer:
            return integerValue(object);
        case Kind::real:
            return PropertyList(realOf(object));
        case Kind::data:
            return PropertyList(PropertyList::Data(object.body.begin(), object.body.end()));
        case Kind::ascii:
        case Kind::utf16:
            return PropertyList(textOf(object));
        case Kind::uid:
            return PropertyList(PropertyList::Uid{uidOf(object)});
        case Kind::array:
            return buildArray(list, object);
        case Kind::dictionary:
            return buildDictionary(list, object);
        case Kind::nothing:
        case Kind::date:
            return {};
    }
    return {};
}

class BinaryBuilder {
public:
    using Index = BinaryListWriter::Index;

    explicit BinaryBuilder(BinaryListWriter& writer) noexcept : writer_(&writer) {}
    Index write(const PropertyList& list) { return std::visit(*this, list.value()); }

    Index operator()(PropertyList::Other /*absent*/) { return writer_->nothing(); }
    Index operator()(bool value) { return writer_->boolean(value); }
    Index operator()(std::int64_t value) { return writer_->integer(value); }
    Index operator()(double value) { return writer_->real(value); }
    Index operator()(const std::string& value) { return writer_->text(value); }
    Index operator()(const PropertyList::Data& value) { return writer_->data(value); }
    Index operator()(PropertyList::Uid value) { return writer_->uid(value.index); }
    Index operator()(const PropertyList::Array& array) {
        std::vector<Index> entries;
        entries.reserve(array.size());
        for (const PropertyList& entry : array) entries.push_back(write(entry));
        return writer_->array(entries);
    }
    Index operator()(const Dictionary& dictionary) {
        std::vector<Index> keys;
        std::vector<Index> values;
        for (const auto& [key, value] : dictionary) {
            keys.push_back(writer_->text(key));
            values.push_back(write(value));
        }
        return writer_->dictionary(keys, values);
    }

private:
    BinaryListWriter* writer_;
};

}  // namespace

std::optional<PropertyList> parsePropertyList(std::span<const std::uint8_t> bytes) {
    const auto list = BinaryList::open(bytes);
    if (!list) return parseXmlList({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    if (!Unfolding(*list).isAllowed(list->root(), 1)) return std::nullopt;
    return build(*list, list->root());
}

std::vector<std::uint8_t> xmlPropertyList(const PropertyList& root) {
    const std::string xml = xmlList(root);
    return {xml.begin(), xml.end()};
}

std::vector<std::uint8_t> binaryPropertyList(const PropertyList& root) {
    BinaryListWriter writer;
    const auto index = BinaryBuilder(writer).write(root);
    return writer.finish(index);
}

}  // namespace velamo
