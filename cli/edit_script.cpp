#include "cli/edit_script.h"

#include <algorithm>
#include <istream>
#include <optional>

#include "cli/design_json.h"
#include "cli/edit_words.h"

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

const EditWord& wordNamed(const std::string& name) {
    const auto words = editWords();
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

EditCommand parseEditCommand(std::string_view line) {
    std::vector<std::string> arguments;
    while (auto word = takeWord(line)) arguments.push_back(std::move(*word));
    if (arguments.empty()) throw EditSyntaxError("a command is missing");
    const EditWord& word = wordNamed(arguments.front());
    return word.parse(EditArguments(word, std::span(arguments).subspan(1)));
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

std::vector<EditCommand> parseEditLines(std::span<const std::string> lines) {
    std::vector<EditCommand> commands;
    commands.reserve(lines.size());
    for (const std::string& line : lines) {
        try {
            commands.push_back(parseEditCommand(line));
        } catch (const EditSyntaxError& error) {
            throw EditSyntaxError("-e '" + line + "': " + error.what());
        }
    }
    return commands;
}

EditOutcome carryOut(std::span<const EditCommand> commands, VLMDesign& design) {
    EditOutcome outcome;
    for (const EditCommand& command : commands) {
        try {
            outcome.results.push_back(command(design));
        } catch (const EditRefusal& refusal) {
            outcome.results.push_back({{"error", errorJson(refusal.error())}});
            outcome.isDone = false;
            break;
        }
    }
    return outcome;
}

}  // namespace velamo
