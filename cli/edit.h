#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/console.h"
#include "cli/edit_script.h"

namespace velamo {

struct EditRequest {
    std::string file;
    std::vector<std::string> commands;  // behind those of the script
    std::optional<std::string> script;
    std::optional<std::string> target;
    bool isDumped = false;
    ReadingOptions reading{};
};

/// Imports the design, carries out the commands in order and prints {"results": [...]} with one result a command, and
/// with "design", the design as in a dump, where that is asked for; before, the design is saved to the target, if there
/// is one, as saveDesign does. The script "-" is the standard input; one that cannot be read is a failure. A command
/// that fails ends the run: its result is {"error": ...}, and nothing is exported.
[[nodiscard]] ExitStatus edit(const EditRequest& request, const Console& console);

}  // namespace velamo
