#include "cli/edit.h"

#include <CLI/CLI.hpp>
#include <fstream>
#include <memory>
#include <optional>
#include <ostream>

#include "cli/commands.h"
#include "cli/design_json.h"
#include "formats/import.h"

namespace velamo {
namespace {

struct EditRequest {
    std::string file;
    std::vector<std::string> commands;
    std::optional<std::string> script;
    bool isDumped = false;
};

std::string helpOnWords() {
    std::string help = "Commands, carried out in order, those of a script first:\n";
    for (const EditWord& word : editWords())
        help += "  " + std::string(word.name) + " " + std::string(word.parameters) + "\n      " +
                std::string(word.meaning) + "; for example: " + std::string(word.example) + "\n";
    return help;
}

std::vector<EditCommand> commandsOf(const EditRequest& request) {
    std::vector<EditCommand> commands;
    if (request.script) {
        std::ifstream in(*request.script);
        if (!in) throw EditSyntaxError("the script '" + *request.script + "' cannot be read");
        commands = parseEditScript(in, *request.script);
    }
    for (const std::string& line : request.commands) {
        try {
            commands.push_back(parseEditCommand(line));
        } catch (const EditSyntaxError& error) {
            throw EditSyntaxError("-e '" + line + "': " + error.what());
        }
    }
    return commands;
}

/// Everything is read before anything is done, so that a mistake in the last command changes nothing.
ExitStatus run(const EditRequest& request, const Console& console) {
    std::vector<EditCommand> commands;
    try {
        commands = commandsOf(request);
    } catch (const EditSyntaxError& error) {
        reportWrongUsage(console, error.what());
        return ExitStatus::wrongUsage;
    }
    return edit(request.file, commands, request.isDumped, console);
}

}  // namespace

ExitStatus edit(const std::filesystem::path& file, std::span<const EditCommand> commands, bool isDumped,
                const Console& console) {
    VLMDesign design;
    VLMError error;
    if (!importDesignFromURLerror(design, file, &error)) {
        reportProblem(console, file, error);
        return ExitStatus::failure;
    }
    Json results = Json::array();
    for (const EditCommand& command : commands) results.push_back(command(design));
    console.out << "{\"results\": " << textOf(results);
    if (isDumped) {
        console.out << ", \"design\": ";
        writeDesignJson(console.out, design, nullptr);
    }
    console.out << "}\n";
    return ExitStatus::success;
}

void describeEdit(CLI::App& program, Action& chosen) {
    auto* command = program.add_subcommand("edit", "Carry out edit commands on a design and print their results");
    const auto request = std::make_shared<EditRequest>();
    command->add_option("IN", request->file, "The design")->required();
    command->add_option("-e", request->commands, "A command; may be given several times")->allow_extra_args(false);
    command->add_option("-f", request->script, "A script: a command a line, lines that start with # are comments");
    command->add_flag("--dump", request->isDumped, "Print the design as well, as 'velamo dump' does");
    command->footer(helpOnWords());
    command->callback(
        [&chosen, request] { chosen = [request](const Console& console) { return run(*request, console); }; });
}

}  // namespace velamo
