#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <variant>
#include <vector>

#include "reading/design_facts.h"
#include "reading/design_failure.h"
#include "velamo/platform/hashing/sha256.h"
#include "velamo/platform/processes/lasting_worker.h"

namespace velamo {

/// What reading a design gave: what is known of it, or why it is broken.
using DesignContent = std::variant<DesignFacts, DesignFailure>;

/// What came of reading a file.
struct FileFacts {
    DesignContent content;
    std::optional<Sha256> hash = {};  // of its bytes; nothing where they ended their reader
    friend bool operator==(const FileFacts&, const FileFacts&) = default;
};

/// That, or why the system did not let the file be read.
using FileOutcome = std::variant<FileFacts, std::error_code>;

/// What came of reading a design in an archive.
struct MemberFacts {
    std::string location;       // in the archive, as the bytes of its name
    std::string name;           // the same as text
    std::int64_t modified = 0;  // nanoseconds since the start of 1970; 0 where the archive does not say
    std::uint64_t size = 0;     // of its bytes
    FileFacts facts;
    friend bool operator==(const MemberFacts&, const MemberFacts&) = default;
};

/// What came of going through an archive.
struct ArchiveFacts {
    std::vector<MemberFacts> members;           // in the archive's order
    std::optional<DesignFailure> failure = {};  // why it ended before its end
    friend bool operator==(const ArchiveFacts&, const ArchiveFacts&) = default;
};

/// So many bytes of what is known of the designs of an archive are kept. Those of a hundred thousand are; an archive of
/// more, which somebody made for it, fails behind them.
inline constexpr std::size_t mostBytesOfArchiveFacts = std::size_t{64} << 20;

/// What came of reading a file, or an archive of files.
using FactsOutcome = std::variant<FileFacts, ArchiveFacts, std::error_code>;

/// Reads some files, and tells what came of each, in order. Each thread of execution has a reader of its own. May throw
/// std::bad_alloc, or WorkerLoss when it cannot read anything any more.
using FactsReader = std::function<std::vector<FactsOutcome>(std::span<const std::filesystem::path> files)>;

/// Readers for a thread each.
struct FactsReaders {
    std::vector<FactsReader> readers;
    bool areConfined = false;  // the system refuses them everything but reading
};

/// At most `count` readers, but at least one. Each reads every file once, in a process of its own that can do nothing
/// else (see LastingWorker): a file that ends it, or takes more than `limits` allow, is no sound design, and the next
/// one is read as ever. To be called while this process has one thread. WorkerLoss when there is no process to be had.
[[nodiscard]] FactsReaders factsReaders(std::size_t count, const WorkerLimits& limits = {});

/// Reads a file that is no archive. May throw std::bad_alloc.
[[nodiscard]] FileOutcome readFileFacts(const std::filesystem::path& file);

/// What the readers do with a file; one with an archive's name is gone through as such (see hasArchiveName). May throw
/// std::bad_alloc.
[[nodiscard]] FactsOutcome readFacts(const std::filesystem::path& file);

/// A number that changes when the library does, so that files are read again after an update. std::system_error when
/// that cannot be told.
[[nodiscard]] std::int64_t readerNumber();

/// The same for any file that reads.
[[nodiscard]] std::int64_t readerNumber(const std::filesystem::path& module);

}  // namespace velamo
