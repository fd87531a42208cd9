#pragma once

#include <string>
#include <vector>

#include "cli/console.h"

namespace velamo {

/// Does what the arguments (without the program's name) ask for and returns the exit status: 0 success, 1 failure, 2
/// wrong usage. Nothing is thrown.
[[nodiscard]] int runCommandLine(std::vector<std::string> arguments, const Console& console) noexcept;

}  // namespace velamo
