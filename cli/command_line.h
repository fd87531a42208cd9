#pragma once

#include <string>
#include <vector>

#include "cli/console.h"

namespace velamo {

/// Does what the arguments (without the program's name) ask for and returns the exit status: 0 success, 1 failure, 2
/// wrong usage. Nothing is thrown. Until it returns, a stream of the console that is a terminal shows all that is
/// written to it and obeys nothing (see HarmlessOutput).
[[nodiscard]] int runCommandLine(std::vector<std::string> arguments, const Console& console) noexcept;

}  // namespace velamo
