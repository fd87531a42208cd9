#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "velamo/model/error.h"
#include "velamo/platform/processes/worker_process.h"

namespace velamo {

/// The failure of a file that ended its reader: ETIMEDOUT where it took too long, else EFAULT, with words for it.
[[nodiscard]] VLMError errorOf(const WorkerDeath& death);

/// A line for a program's standard error: "PROGRAM: FILE: MESSAGE (error CODE)". What a terminal would obey in the name
/// is escaped.
[[nodiscard]] std::string problemLine(std::string_view program, const std::filesystem::path& file,
                                      const VLMError& error);

}  // namespace velamo
