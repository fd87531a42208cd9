#include "platform/binary_list.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <new>

#include "platform/text.h"
#include "platform/utf16.h"

namespace velamo {
namespace {

using Bytes = std::span<const std::uint8_t>;
using Kind = BinaryList::Kind;
using Object = BinaryList::Object;

constexpr std::string_view magic = "bplist0";  // and one byte for the version
constexpr std::string_view header = "bplist00";
constexpr std::size_t trailerSize = 32;
constexpr unsigned longCount = 15;  // the count stands behind the mark as an integer object

std::uint64_t bigEndian(Bytes bytes) {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : bytes) value = value << 8 | byte;
    return value;
}

std::optional<Object> fixed(Kind kind, std::size_t size, Bytes rest) {
    if (size > rest.size()) return std::nullopt;
    return Object{kind, size, rest.first(size)};
}

std::optional<Object> counted(Kind kind, std::size_t unit, std::uint64_t count, Bytes rest) {
    if (count > rest.size() / unit) return std::nullopt;
    return Object{kind, static_cast<std::size_t>(count), rest.first(static_cast<std::size_t>(count) * unit)};
}

std::optional<Object> countedBehindMark(Kind kind, std::size_t unit, unsigned count, Bytes rest) {
    if (count != longCount) return counted(kind, unit, count, rest);
    if (rest.empty() || (rest[0] & 0xFC) != 0x10) return std::nullopt;
    const std::size_t width = std::size_t{1} << (rest[0] & 0x03);
    if (width >= rest.size()) return std::nullopt;
    return counted(kind, unit, bigEndian(rest.subspan(1, width)), rest.subspan(1 + width));
}

std::optional<Object> single(unsigned low) {
    if (low == 0) return Object{};
    if (low == 8 || low == 9) return Object{Kind::boolean, low - 8, {}};
    return std::nullopt;
}

// The object whose mark is the first of the bytes; the mark's high half says the kind, its low half the size.
std::optional<Object> objectAt(Bytes bytes, std::size_t referenceWidth) {
    const unsigned high = bytes[0] >> 4;
    const unsigned low = bytes[0] & 0x0F;
    const Bytes rest = bytes.subspan(1);
    switch (high) {
        case 0x0:
            return single(low);
        case 0x1:
            return low <= 4 ? fixed(Kind::integer, std::size_t{1} << low, rest) : std::nullopt;
        case 0x2:
            return low == 2 || low == 3 ? fixed(Kind::real, std::size_t{1} << low, rest) : std::nullopt;
        case 0x3:
            return low == 3 ? fixed(Kind::date, 8, rest) : std::nullopt;
        case 0x4:
            return countedBehindMark(Kind::data, 1, low, rest);
        case 0x5:
            return countedBehindMark(Kind::ascii, 1, low, rest);
        case 0x6:
            return countedBehindMark(Kind::utf16, 2, low, rest);
        case 0x8:
            return low < 8 ? fixed(Kind::uid, low + 1, rest) : std::nullopt;
        case 0xA:
            return countedBehindMark(Kind::array, referenceWidth, low, rest);
        case 0xD:
            return countedBehindMark(Kind::dictionary, 2 * referenceWidth, low, rest);
        default:
            return std::nullopt;
    }
}

bool isWidth(std::size_t width) {
    return width >= 1 && width <= 8;
}

std::string_view asText(Bytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};  // a view of the same bytes
}

}  // namespace

std::optional<BinaryList> BinaryList::open(Bytes bytes) noexcept {
    if (bytes.size() < header.size() + trailerSize || !asText(bytes).starts_with(magic)) return std::nullopt;
    const Bytes trailer = bytes.last(trailerSize);
    const Bytes content = bytes.first(bytes.size() - trailerSize);
    const std::uint64_t count = bigEndian(trailer.subspan(8, 8));
    const std::uint64_t tablePosition = bigEndian(trailer.subspan(24, 8));
    BinaryList list;
    list.byteCount_ = bytes.size();
    list.offsetWidth_ = trailer[6];
    list.referenceWidth_ = trailer[7];
    list.root_ = bigEndian(trailer.subspan(16, 8));
    if (!isWidth(list.offsetWidth_) || !isWidth(list.referenceWidth_)) return std::nullopt;
    if (tablePosition > content.size()) return std::nullopt;
    list.objects_ = content.first(static_cast<std::size_t>(tablePosition));
    list.offsets_ = content.subspan(static_cast<std::size_t>(tablePosition));
    if (count > list.offsets_.size() / list.offsetWidth_) return std::nullopt;
    list.offsets_ = list.offsets_.first(static_cast<std::size_t>(count) * list.offsetWidth_);
    return list;
}

std::optional<Object> BinaryList::object(std::uint64_t index) const noexcept {
    if (index >= offsets_.size() / offsetWidth_) return std::nullopt;
    const auto position = static_cast<std::size_t>(index) * offsetWidth_;
    const std::uint64_t offset = bigEndian(offsets_.subspan(position, offsetWidth_));
    if (offset < header.size() || offset >= objects_.size()) return std::nullopt;
    return objectAt(objects_.subspan(static_cast<std::size_t>(offset)), referenceWidth_);
}

std::uint64_t BinaryList::reference(const Object& container, std::size_t place) const noexcept {
    return bigEndian(container.body.subspan(place * referenceWidth_, referenceWidth_));
}

std::optional<std::int64_t> integerOf(const Object& object) noexcept {
    const std::size_t width = object.body.size();
    const auto value = static_cast<std::int64_t>(bigEndian(object.body.last(std::min<std::size_t>(width, 8))));
    if (width <= 8) return value;  // narrower ones have no sign, those of eight bytes have one
    const std::uint64_t sign = value < 0 ? std::numeric_limits<std::uint64_t>::max() : 0;
    if (bigEndian(object.body.first(width - 8)) != sign) return std::nullopt;
    return value;
}

double realOf(const Object& object) noexcept {
    const std::uint64_t bits = bigEndian(object.body);
    if (object.body.size() == sizeof(double)) return std::bit_cast<double>(bits);
    return static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
}

std::uint64_t uidOf(const Object& object) noexcept {
    return bigEndian(object.body);
}

std::string textOf(const Object& object) {
    if (object.kind != Kind::utf16) return validUtf8(asText(object.body));
    std::u16string units;
    units.reserve(object.count);
    for (std::size_t i = 0; i < object.body.size(); i += 2) {
        units += static_cast<char16_t>(object.body[i] << 8 | object.body[i + 1]);
    }
    return utf8FromUtf16(units);
}

bool isTextEqual(const Object& object, std::string_view text) {
    if (object.kind == Kind::ascii) return asText(object.body) == text;
    // A text never has more UTF-16 units than UTF-8 bytes, so no long text is converted in vain.
    return object.kind == Kind::utf16 && object.count <= text.size() && textOf(object) == text;
}

namespace {

std::size_t widthOf(std::uint64_t largest) {
    std::size_t width = 1;
    while (width < 8 && largest >> 8 * width != 0) width *= 2;
    return width;
}

void appendBigEndian(std::vector<std::uint8_t>& bytes, std::uint64_t value, std::size_t width) {
    while (width-- > 0) bytes.push_back(static_cast<std::uint8_t>(value >> 8 * width & 0xFF));
}

void appendMark(std::vector<std::uint8_t>& bytes, unsigned high, std::uint64_t count) {
    bytes.push_back(static_cast<std::uint8_t>(high << 4 | std::min<std::uint64_t>(count, longCount)));
    if (count < longCount) return;
    const std::size_t width = widthOf(count);
    bytes.push_back(static_cast<std::uint8_t>(0x10 | std::countr_zero(width)));
    appendBigEndian(bytes, count, width);
}

bool fitsFloat(double value) {
    if (std::isfinite(value) && std::abs(value) > static_cast<double>(std::numeric_limits<float>::max())) return false;
    const auto widened = static_cast<double>(static_cast<float>(value));
    return std::bit_cast<std::uint64_t>(widened) == std::bit_cast<std::uint64_t>(value);  // -0 and NaN as well
}

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::vector<std::uint8_t> bytesOfText(std::string_view text) {
    std::vector<std::uint8_t> bytes;
    if (isAscii(text)) {
        appendMark(bytes, 0x5, text.size());
        bytes.insert(bytes.end(), text.begin(), text.end());
        return bytes;
    }
    const std::u16string units = utf16FromUtf8(text);
    appendMark(bytes, 0x6, units.size());
    for (const char16_t unit : units) appendBigEndian(bytes, unit, 2);
    return bytes;
}

// The low half of a number's mark: of which power of two its width is.
unsigned powerOf(std::size_t width) {
    return static_cast<unsigned>(std::countr_zero(width));
}

}  // namespace

BinaryListWriter::Index BinaryListWriter::add(const Object& object) {
    if (objects_.size() == std::numeric_limits<Index>::max()) throw std::bad_alloc();
    objects_.push_back(object);
    return static_cast<Index>(objects_.size() - 1);
}

BinaryListWriter::Index BinaryListWriter::addLeaf(Bytes bytes) {
    const std::size_t first = leafBytes_.size();
    leafBytes_.insert(leafBytes_.end(), bytes.begin(), bytes.end());
    return add({Kind::leaf, bytes.size(), first});
}

BinaryListWriter::Index BinaryListWriter::addNumber(unsigned kind, unsigned size, std::uint64_t bits,
                                                    std::size_t width) {
    const auto mark = static_cast<std::uint8_t>(kind << 4 | size);
    const auto [place, isNew] = numbers_[kind].try_emplace(Number{mark, bits}, Index{0});
    if (!isNew) return place->second;
    const std::size_t first = leafBytes_.size();
    leafBytes_.push_back(mark);
    appendBigEndian(leafBytes_, bits, width);
    return place->second = add({Kind::leaf, 1 + width, first});
}

BinaryListWriter::Index BinaryListWriter::nothing() {
    return addNumber(0x0, 0, 0, 0);
}
BinaryListWriter::Index BinaryListWriter::boolean(bool value) {
    return addNumber(0x0, value ? 9 : 8, 0, 0);
}

BinaryListWriter::Index BinaryListWriter::integer(std::int64_t value) {
    const auto bits = static_cast<std::uint64_t>(value);
    const std::size_t width = widthOf(bits);
    return addNumber(0x1, powerOf(width), bits, width);
}

BinaryListWriter::Index BinaryListWriter::real(double value) {
    constexpr std::size_t wide = sizeof(double);
    constexpr std::size_t narrow = sizeof(float);
    if (!fitsFloat(value)) return addNumber(0x2, powerOf(wide), std::bit_cast<std::uint64_t>(value), wide);
    return addNumber(0x2, powerOf(narrow), std::bit_cast<std::uint32_t>(static_cast<float>(value)), narrow);
}

BinaryListWriter::Index BinaryListWriter::text(std::string_view value) {
    if (const auto known = texts_.find(value); known != texts_.end()) return known->second;
    return texts_.emplace(value, addLeaf(bytesOfText(value))).first->second;
}

BinaryListWriter::Index BinaryListWriter::data(Bytes value) {
    std::vector<std::uint8_t> bytes;
    appendMark(bytes, 0x4, value.size());
    bytes.insert(bytes.end(), value.begin(), value.end());
    return addLeaf(bytes);
}

BinaryListWriter::Index BinaryListWriter::uid(std::uint64_t value) {
    const std::size_t width = widthOf(value);
    return addNumber(0x8, static_cast<unsigned>(width - 1), value, width);
}

BinaryListWriter::Index BinaryListWriter::array(std::span<const Index> entries) {
    const std::size_t first = references_.size();
    references_.insert(references_.end(), entries.begin(), entries.end());
    return add({Kind::array, entries.size(), first});
}

BinaryListWriter::Index BinaryListWriter::dictionary(std::span<const Index> keys, std::span<const Index> values) {
    const std::size_t first = references_.size();
    references_.insert(references_.end(), keys.begin(), keys.end());
    references_.insert(references_.end(), values.begin(), values.end());
    return add({Kind::dictionary, keys.size() + values.size(), first});
}

std::vector<std::uint8_t> BinaryListWriter::finish(Index root) const {
    std::vector<std::uint8_t> bytes(header.begin(), header.end());
    const std::size_t referenceWidth = widthOf(objects_.size());
    std::vector<std::size_t> offsets;
    offsets.reserve(objects_.size());
    for (const Object& object : objects_) {
        offsets.push_back(bytes.size());
        if (object.kind == Kind::leaf) {
            const auto leaf = Bytes(leafBytes_).subspan(object.first, object.count);
            bytes.insert(bytes.end(), leaf.begin(), leaf.end());
            continue;
        }
        const bool isDictionary = object.kind == Kind::dictionary;
        appendMark(bytes, isDictionary ? 0xD : 0xA, isDictionary ? object.count / 2 : object.count);
        const auto references = std::span(references_).subspan(object.first, object.count);
        for (const Index reference : references) appendBigEndian(bytes, reference, referenceWidth);
    }
    const std::size_t tablePosition = bytes.size();
    const std::size_t offsetWidth = widthOf(tablePosition);
    for (const std::size_t offset : offsets) appendBigEndian(bytes, offset, offsetWidth);
    appendBigEndian(bytes, 0, 6);
    appendBigEndian(bytes, offsetWidth, 1);
    appendBigEndian(bytes, referenceWidth, 1);
    appendBigEndian(bytes, objects_.size(), 8);
    appendBigEndian(bytes, root, 8);
    appendBigEndian(bytes, tablePosition, 8);
    return bytes;
}

}  // namespace velamo
