#pragma once

#include <filesystem>
#include <span>

#include "cli/console.h"
#include "cli/edit_script.h"

namespace velamo {

/// Imports the design, carries out the commands in order and prints {"results": [...]} with one result a command, and
/// with "design", the design as in a dump, where `isDumped`.
[[nodiscard]] ExitStatus edit(const std::filesystem::path& file, std::span<const EditCommand> commands, bool isDumped,
                              const Console& console);

}  // namespace velamo
