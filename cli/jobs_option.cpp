#include "cli/jobs_option.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <thread>

namespace velamo {
namespace {

constexpr std::size_t mostJobs = 1024;

}  // namespace

std::size_t usualJobs() {
    return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, mostJobs);
}

void addJobsOption(CLI::App& command, std::size_t& jobs, const std::string& meaning) {
    command.add_option("--jobs", jobs, meaning)->check(CLI::Range(std::size_t{1}, mostJobs))->capture_default_str();
}

}  // namespace velamo
