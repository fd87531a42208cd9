#include "cli/edit_script.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <istream>
#include <optional>

#include "cli/design_json.h"

namespace velamo {
namespace {

constexpr std::string_view blanks = " \t\r";

/// Takes the next word of the line, without its quotes; nothing at the end of the line.
std::optional<std::string> takeWord(std::string_view& line) {
    line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
    if (line.empty()) return std::nullopt;
    std::string word;
    while (!line.empty() && blanks.find(line.front()) == blanks.npos) {
        const char quote = line.front();
        if (quote != '"' && quote != '\'') {
            word += quote;
            line.remove_prefix(1);
            continue;
        }
        const std::size_t end = line.find(quote, 1);
        if (end == line.npos) throw EditSyntaxError("a quote is not closed");
        word += line.substr(1, end - 1);
        line.remove_prefix(end + 1);
    }
    return word;
}

std::int32_t integerOf(const std::string& word, std::string_view parameter) {
    std::int32_t number = 0;
    const auto [end, failure] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (failure == std::errc() && end == word.data() + word.size()) return number;
    throw EditSyntaxError(std::string(parameter) + " is a whole number, not '" + word + "'");
}

/// The catalogue's hoop of a vendor and code; wrong usage when there is none.
VLMHoopHandle hoopOf(const std::string& vendor, const std::string& code) {
    VLMDesign design;
    if (design.setHoopFromVendorwithCode(vendor, integerOf(code, "CODE"))) return design.designHoop();
    throw EditSyntaxError("there is no hoop " + code + " of '" + vendor + "'; 'velamo hoops' lists them");
}

EditCommand parseHoop(std::span<const std::string> arguments) {
    return [vendor = arguments[0], code = integerOf(arguments[1], "CODE")](VLMDesign& design) -> Json {
        return design.setHoopFromVendorwithCode(vendor, code);
    };
}

EditCommand parseFindHoop(std::span<const std::string> arguments) {
    return [vendor = arguments[0]](VLMDesign& design) { return hoopJson(design.findHoopFromVendor(vendor)); };
}

EditCommand parseFits(std::span<const std::string> arguments) {
    return [hoop = hoopOf(arguments[0], arguments[1])](VLMDesign& design) -> Json {
        return design.designFitsInHoop(*hoop);
    };
}

EditCommand parseOutside(std::span<const std::string> arguments) {
    return [hoop = hoopOf(arguments[0], arguments[1])](VLMDesign& design) -> Json {
        return design.stitchesOutsideOfHoop(*hoop);
    };
}

constexpr std::array<EditWord, 4> words{{
    {"hoop", "VENDOR CODE", "give the design a hoop; the code -1 takes it away. True when there is such a hoop",
     "hoop Janome 28", parseHoop, 2},
    {"find-hoop", "VENDOR", "the vendor's first hoop that the design fits in; the design is not given it",
     "find-hoop Janome", parseFindHoop, 1},
    {"fits", "VENDOR CODE", "whether the design is at most as large as the hoop", "fits Pfaff 3", parseFits, 2},
    {"outside", "VENDOR CODE", "whether something lies outside the hoop, its middle being at the origin",
     "outside Janome 4", parseOutside, 2},
}};

const EditWord& wordNamed(const std::string& name) {
    const auto found =
        std::find_if(words.begin(), words.end(), [&](const EditWord& word) { return word.name == name; });
    if (found == words.end()) throw EditSyntaxError("there is no command '" + name + "'");
    return *found;
}

bool isBlank(std::string_view line) {
    const std::size_t first = line.find_first_not_of(blanks);
    return first == line.npos || line[first] == '#';
}

}  // namespace

std::span<const EditWord> editWords() noexcept {
    return words;
}

EditCommand parseEditCommand(std::string_view line) {
    std::vector<std::string> arguments;
    while (auto word = takeWord(line)) arguments.push_back(std::move(*word));
    if (arguments.empty()) throw EditSyntaxError("a command is missing");
    const EditWord& word = wordNamed(arguments.front());
    if (arguments.size() - 1 != word.parameterCount)
        throw EditSyntaxError("expected '" + std::string(word.name) + " " + std::string(word.parameters) + "'");
    return word.parse(std::span(arguments).subspan(1));
}

std::vector<EditCommand> parseEditScript(std::istream& script, const std::string& name) {
    std::vector<EditCommand> commands;
    int number = 0;
    for (std::string line; std::getline(script, line);) {
        ++number;
        if (isBlank(line)) continue;
        try {
            commands.push_back(parseEditCommand(line));
        } catch (const EditSyntaxError& error) {
            throw EditSyntaxError(name + ", line " + std::to_string(number) + ": " + error.what());
        }
    }
    return commands;
}

}  // namespace velamo
