#include "cli/reading.h"

#include <CLI/CLI.hpp>
#include <ostream>

namespace velamo {
namespace {

ExitStatus reportNoProcess(const Console& console, const std::system_error& reason) {
    console.problems << "velamo: there is no process to read designs in: " << reason.code().message() << " (error "
                     << reason.code().value() << ")\n";
    return ExitStatus::failure;
}

}  // namespace

void addReadingOptions(CLI::App& command, ReadingOptions& options) {
    command.add_flag("--confined-only", options.isConfinedOnly,
                     "Read nothing where the system cannot confine the process that reads");
}

WorkerLimits workerLimitsOf(const ReadingOptions& options) {
    return {.isConfinedOnly = options.isConfinedOnly};
}

bool reportConfinement(const ReadingOptions& options, bool isConfined, const Console& console) {
    if (isConfined) return true;
    console.problems << "velamo: " << (options.isConfinedOnly ? "nothing is read: " : "") << unconfinedNotice << '\n';
    return !options.isConfinedOnly;
}

DesignSource sourceOf(ConfinedReader& reader) {
    return [&reader](VLMDesign& design, const std::filesystem::path& file, VLMError* error) {
        return reader.readDesign(design, file, error);
    };
}

ExitStatus withoutReaderLoss(const Console& console, const std::function<ExitStatus()>& body) {
    try {
        return body();
    } catch (const WorkerLoss& reason) {
        return reportNoProcess(console, reason);
    }
}

ExitStatus withReaders(const ReadingOptions& options, std::size_t count, const Console& console,
                       const std::function<ExitStatus(std::vector<ConfinedReader> readers)>& body) {
    return withoutReaderLoss(console, [&] {
        auto readers = ConfinedReader::some(count, workerLimitsOf(options));
        if (!reportConfinement(options, readers.front().isConfined(), console)) return ExitStatus::failure;
        return body(std::move(readers));
    });
}

ExitStatus withReader(const ReadingOptions& options, const Console& console,
                      const std::function<ExitStatus(ConfinedReader& reader)>& body) {
    return withoutReaderLoss(console, [&] {
        ConfinedReader reader(workerLimitsOf(options));
        if (!reportConfinement(options, reader.isConfined(), console)) return ExitStatus::failure;
        return body(reader);
    });
}

}  // namespace velamo
