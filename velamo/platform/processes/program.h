#pragma once

#include <filesystem>
#include <span>
#include <string>

#include "velamo/platform/system/user.h"

namespace velamo {

/// The program of this name in the folders of $PATH, as a shell finds it; empty when there is none.
[[nodiscard]] std::filesystem::path findProgram(const std::string& name,
                                                const Environment& environment = processEnvironment);

/// Runs the program with the arguments, without a shell between, and waits for its end. It has nothing to read, and
/// what it prints is dropped. Returns its exit status, or 128 and the number of the signal that ended it, as shells
/// have it. Throws std::system_error when it cannot be started.
[[nodiscard]] int runProgram(const std::filesystem::path& program, std::span<const std::string> arguments);

}  // namespace velamo
