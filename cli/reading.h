#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <vector>

#include "cli/console.h"
#include "reading/confined_reader.h"

namespace CLI {
class App;
}

namespace velamo {

/// Where designs come from: fills one from a file, as readDesign does.
using DesignSource = std::function<bool(VLMDesign& design, const std::filesystem::path& file, VLMError* error)>;

/// How a command reads designs.
struct ReadingOptions {
    bool isConfinedOnly = false;  // not at all where the system cannot confine the process that does it
};

/// Adds the option --confined-only.
void addReadingOptions(CLI::App& command, ReadingOptions& options);

[[nodiscard]] WorkerLimits workerLimitsOf(const ReadingOptions& options);

/// Says where the system cannot confine the process that reads. False when nothing is to be read then.
[[nodiscard]] bool reportConfinement(const ReadingOptions& options, bool isConfined, const Console& console);

/// Runs what reads designs, with a reader for it. That none can be had, or none any more, is said, as is what
/// reportConfinement says, and is a failure.
[[nodiscard]] ExitStatus withReader(const ReadingOptions& options, const Console& console,
                                    const std::function<ExitStatus(ConfinedReader& reader)>& body);

/// The same with several readers: as many as asked for, or as can be had.
[[nodiscard]] ExitStatus withReaders(const ReadingOptions& options, std::size_t count, const Console& console,
                                     const std::function<ExitStatus(std::vector<ConfinedReader> readers)>& body);

/// The reader, which must stay, as a source.
[[nodiscard]] DesignSource sourceOf(ConfinedReader& reader);

/// Runs what reads designs, and says where WorkerLoss ends it.
[[nodiscard]] ExitStatus withoutReaderLoss(const Console& console, const std::function<ExitStatus()>& body);

}  // namespace velamo
