#pragma once

#include <cstddef>
#include <string>

namespace CLI {
class App;
}

namespace velamo {

/// As many jobs at a time as there are processors.
[[nodiscard]] std::size_t usualJobs();

/// Adds the option --jobs, which sets `jobs`.
void addJobsOption(CLI::App& command, std::size_t& jobs, const std::string& meaning);

}  // namespace velamo
