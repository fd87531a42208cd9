#include "platform/xml_list.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "platform/text.h"
#include "platform/utf16.h"

namespace velamo {
namespace {

constexpr std::string_view whiteSpace = " \t\r\n";
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view uidKey =
    "CF$UID";  // XML has no references of its own: a dictionary with this key alone is one
constexpr std::string_view digits64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

struct Escape {
    std::string_view entity;
    char character;
};
constexpr std::array<Escape, 5> escapes{{{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}}};

std::string_view trimmed(std::string_view text) {
    const std::size_t first = std::min(text.find_first_not_of(whiteSpace), text.size());
    text.remove_prefix(first);
    return text.substr(0, text.find_last_not_of(whiteSpace) + 1);
}

template <class Number, class... Format>
std::optional<Number> numberOf(std::string_view text, Format... format) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, format...);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

std::optional<PropertyList> realFrom(std::string_view text) {
    text = trimmed(text);
    if (text.starts_with('+')) text.remove_prefix(1);
    const auto value = numberOf<double>(text);
    if (!value) return std::nullopt;
    return PropertyList(*value);
}

bool isDigitOf(char c, int base) {
    const bool isDecimal = c >= '0' && c <= '9';
    return isDecimal || (base == 16 && ((c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F')));
}

// A magnitude with a sign; more than 64 bits hold is a number still, but none for us.
PropertyList signedInteger(std::optional<std::uint64_t> magnitude, bool isNegative) {
    constexpr auto largest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (!magnitude || *magnitude > largest + (isNegative ? 1 : 0)) return {};
    return PropertyList(static_cast<std::int64_t>(isNegative ? ~*magnitude + 1 : *magnitude));
}

std::optional<PropertyList> integerFrom(std::string_view text) {
    text = trimmed(text);
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text.remove_prefix(1);
    const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (isHexadecimal) text.remove_prefix(2);
    const int base = isHexadecimal ? 16 : 10;
    const bool areDigits = std::all_of(text.begin(), text.end(), [&](char c) { return isDigitOf(c, base); });
    if (text.empty() || !areDigits) return std::nullopt;
    return signedInteger(numberOf<std::uint64_t>(text, base), isNegative);
}

constexpr auto valuesOfDigits64 = [] {
    std::array<int, 256> values{};
    values.fill(-1);
    for (std::size_t i = 0; i < digits64.size(); ++i) {
        values[static_cast<unsigned char>(digits64[i])] = static_cast<int>(i);
    }
    return values;
}();

std::optional<PropertyList> dataFrom(std::string_view text) {
    PropertyList::Data data;
    data.reserve(text.size() / 4 * 3);
    std::uint32_t bits = 0;
    std::size_t digits = 0;
    bool isPadded = false;
    for (const char c : text) {
        if (whiteSpace.find(c) != std::string_view::npos) continue;
        const int value = valuesOfDigits64[static_cast<unsigned char>(c)];
        if (c != '=' && (isPadded || value < 0)) return std::nullopt;
        isPadded = c == '=';
        if (isPadded) continue;
        bits = bits << 6 | static_cast<std::uint32_t>(value);
        if (++digits % 4 != 1) data.push_back(static_cast<std::uint8_t>(bits >> (8 - digits % 4 * 2) % 8));
    }
    if (digits % 4 == 1) return std::nullopt;
    return PropertyList(std::move(data));
}

std::optional<PropertyList> textFrom(std::string_view text) {
    return PropertyList(validUtf8(text));
}

std::optional<PropertyList> dateFrom(std::string_view text) {
    if (trimmed(text).empty()) return std::nullopt;
    return PropertyList();
}

struct Leaf {
    std::string_view element;
    std::optional<PropertyList> (*read)(std::string_view content);
};
constexpr std::array<Leaf, 5> leaves{{
    {"string", textFrom},
    {"integer", integerFrom},
    {"real", realFrom},
    {"data", dataFrom},
    {"date", dateFrom},
}};

PropertyList dictionaryOrUid(std::vector<PropertyList::Dictionary::Entry> entries) {
    if (entries.size() == 1 && entries.front().first == uidKey) {
        const auto* index = entries.front().second.as<std::int64_t>();
        if (index != nullptr && *index >= 0) return PropertyList(PropertyList::Uid{static_cast<std::uint64_t>(*index)});
    }
    return PropertyList(PropertyList::Dictionary(std::move(entries)));
}

class XmlReader {
public:
    explicit XmlReader(std::string_view xml) noexcept : rest_(xml) {}

    std::optional<PropertyList> document() {
        if (rest_.starts_with(byteOrderMark)) rest_.remove_prefix(byteOrderMark.size());
        if (!skipDocumentType()) return std::nullopt;
        auto first = tag();
        const bool isWrapped = first && !first->isClosing && first->name == "plist";
        if (isWrapped) first = first->isEmpty ? std::nullopt : tag();
        if (!first) return std::nullopt;
        auto root = value(*first, 1);
        if (root && isWrapped && !isClosing(tag(), "plist")) return std::nullopt;
        if (!skipBetweenElements() || !rest_.empty()) return std::nullopt;
        return root;
    }

private:
    struct Tag {
        std::string_view name;
        bool isClosing = false;
        bool isEmpty = false;  // closed at once
    };

    static bool isClosing(const std::optional<Tag>& tag, std::string_view name) {
        return tag && tag->isClosing && tag->name == name;
    }

    bool skip(std::string_view text) {
        if (!rest_.starts_with(text)) return false;
        rest_.remove_prefix(text.size());
        return true;
    }

    // What stands before the mark, which is skipped as well; nothing when there is no such mark.
    std::optional<std::string_view> upTo(std::string_view mark) {
        const std::size_t end = rest_.find(mark);
        if (end == std::string_view::npos) return std::nullopt;
        const auto taken = rest_.substr(0, end);
        rest_.remove_prefix(end + mark.size());
        return taken;
    }

    // White space, comments and instructions; false when one does not end.
    bool skipBetweenElements() {
        while (true) {
            rest_.remove_prefix(std::min(rest_.find_first_not_of(whiteSpace), rest_.size()));
            if (skip("<!--")) {
                if (!upTo("-->")) return false;
            } else if (skip("<?")) {
                if (!upTo("?>")) return false;
            } else {
                return true;
            }
        }
    }

    bool skipDocumentType() {
        if (!skipBetweenElements()) return false;
        if (!skip("<!DOCTYPE")) return true;
        const auto type = upTo(">");
        return type && type->find('[') == std::string_view::npos;  // it could declare entities that unfold without end
    }

    std::optional<Tag> tag() {
        if (!skipBetweenElements() || !skip("<")) return std::nullopt;
        Tag tag;
        tag.isClosing = skip("/");
        tag.name = rest_.substr(0, rest_.find_first_of(" \t\r\n/>"));
        rest_.remove_prefix(tag.name.size());
        auto attributes = upTo(">");
        if (!attributes) return std::nullopt;
        tag.isEmpty = !tag.isClosing && attributes->ends_with('/');
        return tag;
    }

    bool appendEntity(std::string& text) {
        const auto entity = upTo(";");
        if (!entity) return false;
        if (entity->starts_with("#x")) return appendCodePoint(text, numberOf<std::uint32_t>(entity->substr(2), 16));
        if (entity->starts_with('#')) return appendCodePoint(text, numberOf<std::uint32_t>(entity->substr(1)));
        const auto* escape =
            std::find_if(escapes.begin(), escapes.end(), [&](const Escape& e) { return e.entity == *entity; });
        if (escape == escapes.end()) return false;
        text += escape->character;
        return true;
    }

    static bool appendCodePoint(std::string& text, std::optional<std::uint32_t> codePoint) {
        return codePoint && *codePoint != 0 && velamo::appendCodePoint(text, *codePoint);
    }

    // The text up to the end of the element, which is skipped as well.
    std::optional<std::string> content(const Tag& element) {
        std::string text;
        if (element.isEmpty) return text;
        while (true) {
            const std::size_t length = std::min(rest_.find_first_of("<&"), rest_.size());
            text += rest_.substr(0, length);
            rest_.remove_prefix(length);
            if (skip("&")) {
                if (!appendEntity(text)) return std::nullopt;
            } else if (skip("<![CDATA[")) {
                const auto raw = upTo("]]>");
                if (!raw) return std::nullopt;
                text += *raw;
            } else if (skip("<!--")) {
                if (!upTo("-->")) return std::nullopt;
            } else {
                return isClosing(tag(), element.name) ? std::optional(std::move(text)) : std::nullopt;
            }
        }
    }

    std::optional<PropertyList> value(const Tag& element, int depth) {
        if (element.isClosing) return std::nullopt;
        if (element.name == "array") return array(element, depth);
        if (element.name == "dict") return dictionary(element, depth);
        const auto text = content(element);
        if (!text) return std::nullopt;
        if (element.name == "true" || element.name == "false") return boolean(element, *text);
        const auto* leaf =
            std::find_if(leaves.begin(), leaves.end(), [&](const Leaf& l) { return l.element == element.name; });
        return leaf == leaves.end() ? std::nullopt : leaf->read(*text);
    }

    static std::optional<PropertyList> boolean(const Tag& element, std::string_view text) {
        if (!trimmed(text).empty()) return std::nullopt;
        return PropertyList(element.name == "true");
    }

    std::optional<PropertyList> array(const Tag& element, int depth) {
        if (depth > deepestNesting) return std::nullopt;
        PropertyList::Array entries;
        while (!element.isEmpty) {
            const auto next = tag();
            if (isClosing(next, "array")) break;
            auto entry = next ? value(*next, depth + 1) : std::nullopt;
            if (!entry) return std::nullopt;
            entries.push_back(std::move(*entry));
        }
        return PropertyList(std::move(entries));
    }

    std::optional<PropertyList> dictionary(const Tag& element, int depth) {
        if (depth > deepestNesting) return std::nullopt;
        std::vector<PropertyList::Dictionary::Entry> entries;
        while (!element.isEmpty) {
            const auto next = tag();
            if (isClosing(next, "dict")) break;
            auto entry = next ? keyAndValue(*next, depth) : std::nullopt;
            if (!entry) return std::nullopt;
            entries.push_back(std::move(*entry));
        }
        return dictionaryOrUid(std::move(entries));
    }

    std::optional<PropertyList::Dictionary::Entry> keyAndValue(const Tag& element, int depth) {
        if (element.isClosing || element.name != "key") return std::nullopt;
        const auto key = content(element);
        const auto next = key ? tag() : std::nullopt;
        auto found = next ? value(*next, depth + 1) : std::nullopt;
        if (!found) return std::nullopt;
        return PropertyList::Dictionary::Entry(validUtf8(*key), std::move(*found));
    }

    std::string_view rest_;
};

// XML has no way to say most control characters, nor the two units that are no characters.
bool isCharacter(char16_t unit) {
    return unit >= 0x20 ? unit < 0xFFFE : whiteSpace.find(static_cast<char>(unit)) != std::string_view::npos;
}

std::string escaped(std::string_view text) {
    std::u16string units = utf16FromUtf8(text);
    std::replace_if(
        units.begin(), units.end(), [](char16_t unit) { return !isCharacter(unit); }, u'\uFFFD');
    std::string result;
    for (const char c : utf8FromUtf16(units)) {
        if (c == '&')
            result += "&amp;";
        else if (c == '<')
            result += "&lt;";
        else if (c == '>')
            result += "&gt;";
        else if (c == '\r')
            result += "&#13;";  // readers of XML take a bare one for the end of a line
        else
            result += c;
    }
    return result;
}

std::string base64(const PropertyList::Data& data) {
    std::string text;
    for (std::size_t i = 0; i < data.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(3, data.size() - i);
        std::uint32_t bits = 0;
        for (std::size_t j = 0; j < 3; ++j) bits = bits << 8 | (j < count ? data[i + j] : 0U);
        for (std::size_t j = 0; j < 4; ++j) text += j <= count ? digits64[bits >> (18 - 6 * j) & 0x3F] : '=';
    }
    return text;
}

std::string digitsOf(double value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value < 0 ? "-infinity" : "+infinity";
    std::array<char, 32> digits{};  // the shortest form that reads back the same takes 24 at most
    return {digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr};
}

class XmlWriter {
public:
    std::string document(const PropertyList& root) && {
        text_ =
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
            "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
            "<plist version=\"1.0\">\n";
        write(root);
        text_ += "</plist>\n";
        return std::move(text_);
    }

    void operator()(PropertyList::Other /*absent*/) { element("string", ""); }
    void operator()(bool value) { line(value ? "<true/>" : "<false/>"); }
    void operator()(std::int64_t value) { element("integer", std::to_string(value)); }
    void operator()(double value) { element("real", digitsOf(value)); }
    void operator()(const std::string& value) { element("string", escaped(value)); }
    void operator()(const PropertyList::Data& value) { element("data", base64(value)); }
    void operator()(PropertyList::Uid value) {
        line("<dict>");
        ++depth_;
        element("key", uidKey);
        element("integer", std::to_string(value.index));
        --depth_;
        line("</dict>");
    }
    void operator()(const PropertyList::Array& entries) {
        if (entries.empty()) return line("<array/>");
        line("<array>");
        ++depth_;
        for (const PropertyList& entry : entries) write(entry);
        --depth_;
        line("</array>");
    }
    void operator()(const PropertyList::Dictionary& dictionary) {
        if (dictionary.empty()) return line("<dict/>");
        line("<dict>");
        ++depth_;
        for (const auto& [key, value] : dictionary) {
            element("key", escaped(key));
            write(value);
        }
        --depth_;
        line("</dict>");
    }

private:
    void write(const PropertyList& list) { std::visit(*this, list.value()); }
    void line(std::string_view text) { text_.append(depth_, '\t').append(text).append("\n"); }
    void element(std::string_view name, std::string_view content) {
        text_.append(depth_, '\t').append("<").append(name).append(">").append(content);
        text_.append("</").append(name).append(">\n");
    }

    std::string text_;
    std::size_t depth_ = 0;
};

}  // namespace

std::optional<PropertyList> parseXmlList(std::string_view xml) {
    if (xml.find('\0') != std::string_view::npos) return std::nullopt;  // no text of XML holds one
    return XmlReader(xml).document();
}

std::string xmlList(const PropertyList& root) {
    return XmlWriter().document(root);
}

}  // namespace velamo
