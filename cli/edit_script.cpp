#include "cli/edit_script.h"

#include <algorithm>
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

/// The line without the comment that "#" starts at its beginning or behind a blank, unless quotes hold it.
std::string_view withoutComment(std::string_view line) {
    char quote = '\0';
    bool isBehindBlank = true;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (quote == '\0' && c == '#' && isBehindBlank) return line.substr(0, i);
        if (quote == '\0' && (c == '"' || c == '\''))
            quote = c;
        else if (c == quote)
            quote = '\0';
        isBehindBlank = blanks.find(c) != blanks.npos;
    }
    return line;
}

}  // namespace

EditCommand parseEditCommand(std::string_view line) {
    std::vector<std::string> arguments;
    while (auto word = takeWord(line)) arguments.push_back(std::move(*word));
    if (arguments.empty()) throw EditSyntaxError("a command is missing");
    const EditWord& word = wordNamed(arguments.front());
    return word.parse(EditArguments(word, std::span(arguments).subspan(1)));
}

std::vector<EditCommand> parseEditScript(std::string_view script, const std::string& name) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (script.starts_with(byteOrderMark)) script.remove_prefix(byteOrderMark.size());
    std::vector<EditCommand> commands;
    for (int number = 1; !script.empty(); ++number) {
        const std::string_view line = script.substr(0, script.find('\n'));
        script.remove_prefix(std::min(line.size() + 1, script.size()));
        const std::string_view command = withoutComment(line);
        if (command.find_first_not_of(blanks) == command.npos) continue;
        try {
            commands.push_back(parseEditCommand(command));
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

EditOutcome carryOut(std::span<const EditCommand> commands, VLMDesign& design, const DesignSource& source) {
    EditOutcome outcome;
    for (const EditCommand& command : commands) {
        try {
            outcome.results.push_back(command(design, source));
        } catch (const EditRefusal& refusal) {
            outcome.results.push_back({{"error", errorJson(refusal.error())}});
            outcome.refusal = refusal;
            break;
        }
    }
    return outcome;
}

}  // namespace velamo
