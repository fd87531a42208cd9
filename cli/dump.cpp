#include "cli/dump.h"

#include <CLI/CLI.hpp>
#include <memory>

#include "cli/commands.h"
#include "cli/design_json.h"
#include "reading/read_design.h"

namespace velamo {

ExitStatus dump(const std::filesystem::path& file, const Console& console) {
    VLMDesign design;
    VLMError error;
    const bool isRead = readDesign(design, file, &error);
    writeDesignJson(console.out, design, isRead ? nullptr : &error);
    if (isRead) return ExitStatus::success;
    reportProblem(console, file, error);
    return ExitStatus::failure;
}

void describeDump(CLI::App& program, Action& chosen) {
    auto* command = program.add_subcommand("dump", "Print a whole design as one JSON object");
    const auto file = std::make_shared<std::string>();
    command->add_option("FILE", *file, "The design")->required();
    command->callback([&chosen, file] { chosen = [file](const Console& console) { return dump(*file, console); }; });
}

}  // namespace velamo
