#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "catalogue/catalogue.h"
#include "cli/console.h"

namespace velamo {

enum class SearchOutput : std::uint8_t { table, json, paths };

/// Looks designs up in the catalogue and prints them: a table for a person, a JSON list, or paths that each end with a
/// zero byte.
[[nodiscard]] ExitStatus search(const std::filesystem::path& catalogue, const SearchRequest& request,
                                SearchOutput output, const Console& console);

/// A point in time as "2024-02-29T12:34:56Z". `time`: nanoseconds since the start of 1970.
[[nodiscard]] std::string timeText(std::int64_t time);

}  // namespace velamo
