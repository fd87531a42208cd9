#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <system_error>
#include <variant>
#include <vector>

#include "plugin/host.h"
#include "velamo/model/error.h"
#include "velamo/platform/processes/lasting_worker.h"

namespace velamo {

/// Why a file could not be read as a design.
struct DesignFailure {
    std::string domain;
    int code = 0;
    std::string message;
    friend bool operator==(const DesignFailure&, const DesignFailure&) = default;
};

/// What came of reading a file: the design's attributes, why it is no sound design, or why the system did not let it be
/// read at all.
using ReadOutcome = std::variant<DesignAttributes, DesignFailure, std::error_code>;

/// What the catalogue keeps of an error.
[[nodiscard]] DesignFailure failureOf(const VLMError& error);

/// Reads some files, and tells what came of each, in order. Each thread of execution has a reader of its own. May throw
/// std::bad_alloc, or WorkerLoss when it cannot read anything any more.
using DesignReader = std::function<std::vector<ReadOutcome>(std::span<const std::filesystem::path> files)>;

/// Readers for a thread each.
struct PluginReaders {
    std::vector<DesignReader> readers;
    bool areConfined = false;  // the system refuses them everything but reading
};

/// At most `count` readers, but at least one, that get the attributes from the importer plug-in, as the system's
/// indexer does. Of a file that the plug-in refuses, the reason is asked for. Each reads in a process of its own that
/// can do nothing else (see LastingWorker): a file that ends it, or takes more than `limits` allow, is no sound design,
/// and the next one is read as ever. To be called while this process has one thread. std::runtime_error when the module
/// cannot be loaded, WorkerLoss when there is no process to be had.
[[nodiscard]] PluginReaders pluginReaders(const std::filesystem::path& module, std::size_t count,
                                          const WorkerLimits& limits = {});

/// A number that changes when the module does, so that files are read again after an update. std::system_error when
/// that cannot be told.
[[nodiscard]] std::int64_t readerNumber(const std::filesystem::path& module);

}  // namespace velamo
