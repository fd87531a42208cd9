#include "cli/edit.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <ostream>

#include "cli/commands.h"
#include "cli/design_json.h"
#include "cli/edit_words.h"
#include "cli/save_design.h"
#include "velamo/model/failure.h"
#include "velamo/platform/system/text_input.h"

namespace velamo {
namespace {

std::string helpOnWords() {
    std::string help = "Commands, carried out in order, those of a script first:\n";
    for (const EditWord& word : editWords()) {
        const std::string parameters = word.parameters.empty() ? "" : " " + std::string(word.parameters);
        help += "  " + std::string(word.name) + parameters + "\n      " + std::string(word.meaning) +
                "; for example: " + std::string(word.example) + "\n";
    }
    return help;
}

/// The script's text, or "" without one; nothing, and a problem reported, where it cannot be read.
std::optional<std::string> scriptOf(const EditRequest& request, const Console& console) {
    if (!request.script) return "";
    const bool isInput = *request.script == "-";
    std::error_code failure;
    std::string text = isInput ? textOfStandardInput(failure) : textOfFile(*request.script, failure);
    if (!failure) return text;
    VLMError error;
    failWithSystemError(failure.value(), &error);
    reportProblem(console, isInput ? "standard input" : *request.script, error);
    return std::nullopt;
}

std::vector<EditCommand> commandsOf(const EditRequest& request, const std::string& scriptText) {
    std::vector<EditCommand> commands;
    if (request.script) commands = parseEditScript(scriptText, *request.script);
    const auto more = parseEditLines(request.commands);
    commands.insert(commands.end(), more.begin(), more.end());
    return commands;
}

void printOutcome(const Json& results, const VLMDesign* dumped, const Console& console) {
    console.out << "{\"results\": " << textOf(results);
    if (dumped != nullptr) {
        console.out << ", \"design\": ";
        writeDesignJson(console.out, *dumped, nullptr);
    }
    console.out << "}\n";
}

ExitStatus editDesign(const EditRequest& request, std::span<const EditCommand> commands, ConfinedReader& reader,
                      const Console& console) {
    const DesignSource source = sourceOf(reader);
    VLMDesign design;
    VLMError error;
    if (!source(design, request.file, &error)) {
        reportProblem(console, request.file, error);
        return ExitStatus::failure;
    }
    const DesignOrigin origin{request.file, design.useThreadFile()};
    const EditOutcome outcome = carryOut(commands, design, source);
    bool isDone = !outcome.refusal;
    if (outcome.refusal)
        reportProblem(console, outcome.refusal->file().value_or(request.file), outcome.refusal->error());
    if (isDone && request.target) {
        const SaveOutcome saved = saveDesign(design, *request.target, origin, {}, threadsFrom(reader));
        report(saved, console);
        isDone = saved.isSaved;
    }
    printOutcome(outcome.results, request.isDumped ? &design : nullptr, console);
    return isDone ? ExitStatus::success : ExitStatus::failure;
}

}  // namespace

/// Everything is read before anything is done, so that a mistake in the last command changes nothing.
ExitStatus edit(const EditRequest& request, const Console& console) {
    try {
        const auto scriptText = scriptOf(request, console);
        if (!scriptText) return ExitStatus::failure;
        const auto commands = commandsOf(request, *scriptText);
        return withReader(request.reading, console,
                          [&](ConfinedReader& reader) { return editDesign(request, commands, reader, console); });
    } catch (const EditSyntaxError& error) {
        reportWrongUsage(console, error.what());
        return ExitStatus::wrongUsage;
    }
}

void describeEdit(CLI::App& program, Action& chosen) {
    auto* command = program.add_subcommand("edit", "Carry out edit commands on a design and print their results");
    const auto request = std::make_shared<EditRequest>();
    command->add_option("IN", request->file, "The design")->required();
    command->add_option("-e", request->commands, "A command; may be given several times")->allow_extra_args(false);
    command->add_option("-f", request->script,
                        "A script, - for the standard input: a command a line; # starts a comment");
    command->add_option("-o", request->target, "Write the design to this file; its extension decides the format");
    command->add_flag("--dump", request->isDumped, "Print the design as well, as 'velamo dump' does");
    addReadingOptions(*command, request->reading);
    command->footer(helpOnWords());
    command->callback(
        [&chosen, request] { chosen = [request](const Console& console) { return edit(*request, console); }; });
}

}  // namespace velamo
