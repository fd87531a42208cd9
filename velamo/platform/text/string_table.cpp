#include "velamo/platform/text/string_table.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <utility>

#include "velamo/platform/text/text.h"
#include "velamo/platform/text/utf16.h"

namespace velamo {
namespace {

using Entry = std::pair<std::string, std::string>;

/// Walks through a ".strings" text; every step takes its part off the front of what is left.
class Scanner {
public:
    explicit Scanner(std::string_view text) noexcept : rest_(text) {}

    /// The next entry, or nothing at the end and where the text is damaged.
    std::optional<Entry> entry() {
        auto key = quoted();
        if (!key || !token("=")) return std::nullopt;
        auto text = quoted();
        if (!text || !token(";")) return std::nullopt;
        return Entry(std::move(*key), std::move(*text));
    }

private:
    bool take(std::string_view expected) noexcept {
        if (rest_.substr(0, expected.size()) != expected) return false;
        rest_.remove_prefix(expected.size());
        return true;
    }

    /// Drops everything up to and including `mark`, or all when it does not come.
    void skipPast(std::string_view mark) noexcept {
        const auto position = rest_.find(mark);
        rest_.remove_prefix(position == std::string_view::npos ? rest_.size() : position + mark.size());
    }

    void skipBlanks() noexcept {
        for (;;) {
            rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r\n"), rest_.size()));
            if (take("/*")) {
                skipPast("*/");
            } else if (take("//")) {
                skipPast("\n");
            } else {
                return;
            }
        }
    }

    bool token(std::string_view expected) noexcept {
        skipBlanks();
        return take(expected);
    }

    std::optional<std::string> quoted() {
        if (!token("\"")) return std::nullopt;
        std::string text;
        while (!rest_.empty()) {
            if (take("\"")) return text;
            if (take("\\")) {
                if (!appendEscaped(text)) return std::nullopt;
                continue;
            }
            text.push_back(rest_.front());
            rest_.remove_prefix(1);
        }
        return std::nullopt;
    }

    /// The character meant by what follows a backslash; false where the text is damaged.
    bool appendEscaped(std::string& text) {
        if (rest_.empty()) return false;
        const char kind = rest_.front();
        rest_.remove_prefix(1);
        if (kind == 'U') return appendCharacters(text);
        constexpr std::string_view kinds = "ntr";
        constexpr std::string_view meanings = "\n\t\r";
        const auto index = kinds.find(kind);
        text.push_back(index == std::string_view::npos ? kind : meanings[index]);
        return true;
    }

    /// The characters of a run of UTF-16 units, whose first has its "\U" taken already.
    bool appendCharacters(std::string& text) {
        std::u16string units;
        do {
            const auto unit = utf16Unit();
            if (!unit) return false;
            units.push_back(*unit);
        } while (take("\\U"));
        text += utf8FromUtf16(units);
        return true;
    }

    std::optional<char16_t> utf16Unit() noexcept {
        constexpr std::size_t digits = 4;
        const auto hex = rest_.substr(0, digits);
        std::uint16_t unit = 0;
        const auto end = std::from_chars(hex.data(), hex.data() + hex.size(), unit, 16).ptr;
        if (hex.size() != digits || end != hex.data() + digits) return std::nullopt;
        rest_.remove_prefix(digits);
        return static_cast<char16_t>(unit);
    }

    std::string_view rest_;
};

}  // namespace

StringTable parseStringTable(std::string_view text) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    const std::string whole = validUtf8(text);
    std::string_view rest = whole;
    if (rest.substr(0, byteOrderMark.size()) == byteOrderMark) rest.remove_prefix(byteOrderMark.size());
    Scanner scanner(rest);
    StringTable table;
    while (auto entry = scanner.entry()) table.insert_or_assign(std::move(entry->first), std::move(entry->second));
    return table;
}

}  // namespace velamo
