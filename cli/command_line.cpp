#include "cli/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <optional>
#include <ostream>

#include "cli/commands.h"
#include "velamo/model/failure.h"
#include "velamo/platform/text/harmless_output.h"

namespace velamo {
namespace {

void describeProgram(CLI::App& program, Action& chosen) {
    program.description("Velamo reads, searches and shows machine-embroidery designs.");
    program.set_version_flag("--version", "velamo " VELAMO_VERSION);
    program.require_subcommand(1);
    for (const auto describe :
         {describeInfo, describeIndex, describeSearch, describeForget, describeDump, describeConvert, describeEdit,
          describeRender, describePalettes, describeHoops, describeDesktop, describeFormatLength, describeParseLength})
        describe(program, chosen);
    program.footer(
        "Exit status: 0 success, 1 failure for some file, 2 wrong usage.\n"
        "'velamo COMMAND --help' tells more of a command.");
}

ExitStatus refuseCommandLine(const std::string& reason, const Console& console) {
    reportWrongUsage(console, reason);
    console.problems << "Run 'velamo --help' or 'velamo COMMAND --help' for more.\n";
    return ExitStatus::wrongUsage;
}

/// The parser also ends with an "error" where it was asked for help or for the version.
ExitStatus reportParsing(const CLI::App& program, const CLI::ParseError& error, const Console& console) {
    const bool isAnswer = error.get_exit_code() == 0;
    if (isAnswer) {
        program.exit(error, console.out, console.problems);
        return ExitStatus::success;
    }
    return refuseCommandLine(error.what(), console);
}

/// The parser would only say that a command is missing.
bool namesNoCommand(const CLI::App& program, const std::string& argument) {
    const auto hasName = [&argument](const CLI::App* command) { return command->check_name(argument); };
    return !argument.starts_with('-') && program.get_subcommands(hasName).empty();
}

ExitStatus run(std::vector<std::string> arguments, const Console& console) {
    Action chosen;
    CLI::App program("", "velamo");
    describeProgram(program, chosen);
    if (arguments.empty()) {
        console.problems << program.help();
        return ExitStatus::wrongUsage;
    }
    if (namesNoCommand(program, arguments.front())) {
        return refuseCommandLine("there is no command '" + arguments.front() + "'", console);
    }
    std::reverse(arguments.begin(), arguments.end());  // as the parser takes them
    try {
        program.parse(std::move(arguments));
    } catch (const CLI::ParseError& error) {
        return reportParsing(program, error, console);
    }
    return chosen(console);
}

/// A full disk shows when the text is written out at last.
ExitStatus finish(ExitStatus status, const Console& console) {
    if (console.out.flush()) return status;
    VLMError error;
    const bool isReasonKnown = console.outFailure != nullptr && *console.outFailure;
    failWithSystemError(isReasonKnown ? console.outFailure->value() : EIO, &error);
    reportProblem(console, std::filesystem::path("standard output"), error);
    return ExitStatus::failure;
}

}  // namespace

int runCommandLine(std::vector<std::string> arguments, const Console& console) noexcept {
    std::optional<HarmlessOutput> harmlessOut;
    std::optional<HarmlessOutput> harmlessProblems;
    if (console.outIsTerminal) harmlessOut.emplace(console.out, terminalEncoding());
    if (console.problemsIsTerminal) harmlessProblems.emplace(console.problems, terminalEncoding());
    auto status = ExitStatus::failure;
    VLMError error;
    const bool isDone = operation(&error, [&] {
        status = finish(run(std::move(arguments), console), console);
        return true;
    });
    if (!isDone) console.problems << "velamo: " << error.message() << " (error " << error.code << ")\n";
    return static_cast<int>(status);
}

}  // namespace velamo
