#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <system_error>
#include <variant>
#include <vector>

#include "catalogue/search.h"

namespace velamo {

/// What came of reading a file: the design's attributes, why it is no sound design, or why the system did not let it be
/// read at all.
using ReadOutcome = std::variant<DesignAttributes, DesignFailure, std::error_code>;

/// Reads one file after another; each thread of execution has a reader of its own. May throw std::bad_alloc.
using DesignReader = std::function<ReadOutcome(const std::filesystem::path& file)>;

/// Readers that get the attributes from the importer plug-in, as the system's indexer does. Of a file that the plug-in
/// refuses, the reason is asked for. std::runtime_error when the module cannot be loaded.
[[nodiscard]] std::vector<DesignReader> pluginReaders(const std::filesystem::path& module, std::size_t count);

/// A number that changes when the module does, so that files are read again after an update.
[[nodiscard]] std::int64_t readerNumber(const std::filesystem::path& module) noexcept;

}  // namespace velamo
