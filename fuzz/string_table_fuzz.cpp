#include "velamo/platform/text/string_table.h"

#include "fuzz/claims.h"
#include "velamo/platform/text/text.h"

namespace velamo::fuzz {
namespace {

std::string inQuotes(std::string_view text) {
    std::string result = "\"";
    for (const char character : text) {
        if (character == '"' || character == '\\') result += '\\';
        result += character;
    }
    return result + '"';
}

std::string written(const StringTable& table) {
    std::string text;
    for (const auto& [key, value] : table) text += inQuotes(key) + " = " + inQuotes(value) + ";\n";
    return text;
}

void checkTable(Input text) {
    constexpr std::size_t smallestEntry = 6;  // ""="";
    const StringTable table = parseStringTable(textOf(text));
    claim(table.size() <= text.size() / smallestEntry, "no more entries than the bytes hold");
    for (const auto& [key, value] : table)
        claim(validUtf8(key) == key && validUtf8(value) == value, "every text is UTF-8");
    claim(parseStringTable(written(table)) == table, "a table that is written plainly is the same");
}

}  // namespace
}  // namespace velamo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velamo::fuzz::checkTable({data, size});
    return 0;
}
