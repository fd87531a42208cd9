#include "cli/dump.h"

#include <CLI/CLI.hpp>
#include <memory>

#include "cli/commands.h"
#include "cli/design_json.h"

namespace velamo {

ExitStatus dump(const std::filesystem::path& file, const ReadingOptions& reading, const Console& console) {
    return withReader(reading, console, [&](ConfinedReader& reader) {
        VLMDesign design;
        VLMError error;
        const bool isRead = reader.readDesign(design, file, &error);
        writeDesignJson(console.out, design, isRead ? nullptr : &error);
        if (isRead) return ExitStatus::success;
        reportProblem(console, file, error);
        return ExitStatus::failure;
    });
}

void describeDump(CLI::App& program, Action& chosen) {
    auto* command = program.add_subcommand("dump", "Print a whole design as one JSON object");
    struct Options {
        std::string file;
        ReadingOptions reading;
    };
    const auto options = std::make_shared<Options>();
    command->add_option("FILE", options->file, "The design")->required();
    addReadingOptions(*command, options->reading);
    command->callback([&chosen, options] {
        chosen = [options](const Console& console) { return dump(options->file, options->reading, console); };
    });
}

}  // namespace velamo
