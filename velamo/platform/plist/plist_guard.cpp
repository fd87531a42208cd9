#include "velamo/platform/plist/plist_guard.h"

#include <algorithm>
#include <array>
#include <optional>

namespace velamo {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t deepestNesting = 64;

// What a binary list may unfold to, so that its memory stays in proportion to its bytes: an ordinary list names the
// same keys and values again and again in one or two bytes each, a hostile one its containers.
constexpr std::size_t costOfValue = 96;  // the bytes of one in memory, beside its text
constexpr std::size_t unfoldingPerByte = 160;

// In XML libplist goes along a dictionary from its first key for each that comes again, and along a text for each
// character reference. A step along the keys takes the time of many bytes of a text.
constexpr std::size_t leastXmlWork = std::size_t{1} << 26;  // about a second
constexpr std::size_t xmlWorkPerByte = 64;
constexpr std::size_t movedBytesPerWork = 64;
constexpr std::size_t longestReference = 9;  // with its end: "#x10FFFF;"
constexpr std::size_t longestTag = 4096;     // a name's length is an int in libplist

constexpr std::size_t headerSize = 8;
constexpr std::size_t trailerSize = 32;
constexpr unsigned longCount = 15;  // the count stands behind the mark as an integer object

std::uint64_t bigEndian(Bytes bytes) noexcept {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : bytes) value = value << 8 | byte;
    return value;
}

/// An object of a binary list: what stands behind its mark and its count.
struct Object {
    enum class Kind : std::uint8_t { leaf, text, array, dictionary };
    Kind kind = Kind::leaf;
    std::size_t count = 0;
    Bytes body;
};
using Kind = Object::Kind;

std::optional<Object> leafOf(std::size_t size, Bytes rest) noexcept {
    if (size > rest.size()) return std::nullopt;
    return Object{Kind::leaf, size, rest.first(size)};
}

/// An object of `count` units of the size; the count may stand behind the mark.
std::optional<Object> countedOf(Kind kind, std::size_t unit, std::uint64_t count, Bytes rest) noexcept {
    if (count == longCount) {
        if (rest.empty() || (rest[0] & 0xFC) != 0x10) return std::nullopt;
        const std::size_t width = std::size_t{1} << (rest[0] & 0x03);
        if (width >= rest.size()) return std::nullopt;
        count = bigEndian(rest.subspan(1, width));
        rest = rest.subspan(1 + width);
    }
    if (count > rest.size() / unit) return std::nullopt;
    return Object{kind, static_cast<std::size_t>(count), rest.first(static_cast<std::size_t>(count) * unit)};
}

/// The object whose mark is the first of the bytes: the mark's high half tells the kind, its low half the size.
std::optional<Object> objectAt(Bytes bytes, std::size_t referenceWidth) noexcept {
    const unsigned low = bytes[0] & 0x0FU;
    const Bytes rest = bytes.subspan(1);
    switch (bytes[0] >> 4) {
        case 0x0:  // a boolean
            return low == 8 || low == 9 ? leafOf(0, rest) : std::nullopt;
        case 0x1:  // an integer
            return low <= 4 ? leafOf(std::size_t{1} << low, rest) : std::nullopt;
        case 0x2:  // a real
            return low == 2 || low == 3 ? leafOf(std::size_t{1} << low, rest) : std::nullopt;
        case 0x3:  // a date
            return low == 3 ? leafOf(8, rest) : std::nullopt;
        case 0x4:  // data
            return countedOf(Kind::leaf, 1, low, rest);
        case 0x5:  // ASCII
            return countedOf(Kind::text, 1, low, rest);
        case 0x6:  // UTF-16
            return countedOf(Kind::text, 2, low, rest);
        case 0x8:  // a reference of a keyed archive
            return low < 8 ? leafOf(low + 1, rest) : std::nullopt;
        case 0xA:
            return countedOf(Kind::array, referenceWidth, low, rest);
        case 0xD:
            return countedOf(Kind::dictionary, 2 * referenceWidth, low, rest);
        default:
            return std::nullopt;
    }
}

/// The binary form: a table of objects that refer to each other by index.
///   "bplist00", the objects, the offset of each object, and at the end a trailer of 32 bytes:
///   offset  bytes   meaning (big-endian)
///   6       1       width of an offset, 1 to 8
///   7       1       width of a reference, 1 to 8
///   8       8       number of objects
///   16      8       index of the root object
///   24      8       position of the table of offsets
class BinaryList {
public:
    /// Whether every reference, followed as building does, leads to an object, and not too deep, in circles or to too
    /// much.
    static bool isSafe(Bytes bytes) noexcept {
        if (bytes.size() < headerSize + trailerSize) return false;
        BinaryList list(bytes);
        return list.hasTables_ && list.isAllowed(bigEndian(bytes.last(trailerSize).subspan(16, 8)), 1);
    }

private:
    explicit BinaryList(Bytes bytes) noexcept : allowance_(bytes.size() * unfoldingPerByte) {
        const Bytes trailer = bytes.last(trailerSize);
        const Bytes content = bytes.first(bytes.size() - trailerSize);
        offsetWidth_ = trailer[6];
        referenceWidth_ = trailer[7];
        if (offsetWidth_ < 1 || offsetWidth_ > 8 || referenceWidth_ < 1 || referenceWidth_ > 8) return;
        const std::uint64_t count = bigEndian(trailer.subspan(8, 8));
        const std::uint64_t position = bigEndian(trailer.subspan(24, 8));
        if (position > content.size() || count > (content.size() - position) / offsetWidth_) return;
        objects_ = content.first(static_cast<std::size_t>(position));
        offsets_ = content.subspan(objects_.size(), static_cast<std::size_t>(count) * offsetWidth_);
        hasTables_ = true;
    }

    [[nodiscard]] std::optional<Object> object(std::uint64_t index) const noexcept {
        if (index >= offsets_.size() / offsetWidth_) return std::nullopt;
        const auto place = static_cast<std::size_t>(index) * offsetWidth_;
        const std::uint64_t offset = bigEndian(offsets_.subspan(place, offsetWidth_));
        if (offset < headerSize || offset >= objects_.size()) return std::nullopt;
        return objectAt(objects_.subspan(static_cast<std::size_t>(offset)), referenceWidth_);
    }

    [[nodiscard]] std::uint64_t reference(const Object& container, std::size_t place) const noexcept {
        return bigEndian(container.body.subspan(place * referenceWidth_, referenceWidth_));
    }

    [[nodiscard]] bool areKeysTexts(const Object& dictionary) const noexcept {
        for (std::size_t place = 0; place < dictionary.count; ++place) {
            const auto key = object(reference(dictionary, place));
            if (!key || key->kind != Kind::text) return false;
        }
        return true;
    }

    /// libplist ends a text at a NUL, and stops the program where that is a key of UTF-16.
    static bool hasNul(const Object& text) noexcept {
        const std::size_t unit = text.count == 0 ? 1 : text.body.size() / text.count;
        for (std::size_t place = 0; place < text.body.size(); place += unit) {
            if (bigEndian(text.body.subspan(place, unit)) == 0) return true;
        }
        return false;
    }

    bool isAllowed(std::uint64_t index, std::size_t depth) noexcept {
        const auto found = object(index);
        if (!found || !spend(costOfValue)) return false;
        if (found->kind == Kind::text && hasNul(*found)) return false;
        if (found->kind != Kind::array && found->kind != Kind::dictionary) return spend(found->body.size());
        if (depth > deepestNesting || (found->kind == Kind::dictionary && !areKeysTexts(*found))) return false;
        const std::size_t references = found->body.size() / referenceWidth_;
        for (std::size_t place = 0; place < references; ++place) {
            if (!isAllowed(reference(*found, place), depth + 1)) return false;
        }
        return true;
    }

    bool spend(std::size_t cost) noexcept {
        if (cost > allowance_) return false;
        allowance_ -= cost;
        return true;
    }

    bool hasTables_ = false;
    Bytes objects_;
    Bytes offsets_;
    std::size_t offsetWidth_ = 1;
    std::size_t referenceWidth_ = 1;
    std::size_t allowance_;
};

/// The XML form, looked at as libplist reads it, so that both see the same tags. What only libplist refuses may differ
/// from there on, as it stops at that place.
class XmlList {
public:
    explicit XmlList(std::string_view xml) noexcept
        : rest_(xml), allowance_(leastXmlWork + xml.size() * xmlWorkPerByte) {}

    bool isSafe() noexcept {
        if (rest_.find('\0') != rest_.npos) return false;
        while (takeText() && !rest_.empty()) {
            if (!takeMarkup()) return false;
        }
        return rest_.empty() && !lacksEnd_;
    }

private:
    /// Takes what stands before the next tag. libplist moves the rest of a text for every reference in it.
    bool takeText() noexcept {
        const std::string_view text = rest_.substr(0, rest_.find('<'));
        rest_.remove_prefix(text.size());
        for (std::size_t place = text.find('&'); place != text.npos; place = text.find('&', place + 1)) {
            const std::string_view reference = text.substr(place + 1, longestReference);
            const std::size_t end = reference.find(';');
            if (end == reference.npos || !isKnown(reference.substr(0, end))) return false;
            if (!spend(text.size() / movedBytesPerWork)) return false;
        }
        return true;
    }

    /// Only so much of a name decides in libplist that "&ampere;" is an ampersand. Numbers it looks at closely.
    static bool isKnown(std::string_view reference) noexcept {
        constexpr std::array<std::string_view, 5> names{"amp", "apos", "gt", "lt", "quot"};
        return reference.starts_with('#') || std::find(names.begin(), names.end(), reference) != names.end();
    }

    bool takeMarkup() noexcept {
        if (rest_.starts_with("<!--")) return takeRun(4, "-->");
        if (rest_.starts_with("<![CDATA[")) return takeRun(9, "]]>");
        if (rest_.starts_with("<?")) return hasWholeQuotes(rest_.substr(0, rest_.find("?>", 1))) && takeRun(1, "?>");
        return takeTag();
    }

    /// Takes everything up to and including the end, which is looked for from a place on.
    bool takeRun(std::size_t place, std::string_view end) noexcept {
        const std::size_t found = rest_.find(end, place);
        if (found == rest_.npos) return false;
        rest_.remove_prefix(found + end.size());
        return true;
    }

    bool takeTag() noexcept {
        const std::string_view tag = rest_.substr(1, std::min(rest_.find('>'), rest_.size()) - 1);
        if (tag.size() > longestTag || !hasWholeQuotes(tag)) return false;
        if (tag.starts_with('!') && !isPlainDocumentType(tag)) return false;
        // libplist takes a list for whole whose end was cut off behind its value.
        if (tag.starts_with("plist") || tag.starts_with("/plist")) lacksEnd_ = tag.front() == 'p';
        return nest(tag) && takeRun(0, ">");
    }

    /// For libplist an end inside quotes is none.
    static bool hasWholeQuotes(std::string_view markup) noexcept {
        return std::count(markup.begin(), markup.end(), '"') % 2 == 0;
    }

    static bool isPlainDocumentType(std::string_view tag) noexcept {
        return tag.starts_with("!DOCTYPE") && tag.find_first_of("[<") == tag.npos;
    }

    /// False when the tag nests too deep or is one key too many. Unusual ends are not counted, which errs to the safe
    /// side.
    bool nest(std::string_view tag) noexcept {
        if (tag == "/array" || tag == "/dict") {
            depth_ -= depth_ > 0 ? 1 : 0;
        } else if (tag.starts_with("key")) {
            return spend(keys_[depth_]++);
        } else if (tag.starts_with("array") || tag.starts_with("dict")) {
            if (depth_ == deepestNesting) return false;
            keys_[depth_ + 1] = 0;
            depth_ += tag == "array/" || tag == "dict/" ? 0 : 1;
        }
        return true;
    }

    bool spend(std::size_t work) noexcept {
        if (work > allowance_) return false;
        allowance_ -= work;
        return true;
    }

    std::string_view rest_;
    std::size_t allowance_;
    bool lacksEnd_ = false;
    std::size_t depth_ = 0;
    std::array<std::size_t, deepestNesting + 1> keys_{};  // of each container that is open
};

}  // namespace

bool isSafeBinaryPlist(std::span<const std::uint8_t> bytes) noexcept {
    return BinaryList::isSafe(bytes);
}

bool isSafeXmlPlist(std::string_view xml) noexcept {
    return XmlList(xml).isSafe();
}

}  // namespace velamo
