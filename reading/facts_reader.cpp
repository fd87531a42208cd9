#include "reading/facts_reader.h"

#include <cerrno>
#include <memory>
#include <string>
#include <utility>

#include "reading/facts_bytes.h"
#include "reading/reader_failures.h"
#include "velamo/formats/import.h"
#include "velamo/model/failure.h"
#include "velamo/platform/system/file_state.h"
#include "velamo/platform/system/files.h"
#include "velamo/platform/system/shared_module.h"

namespace velamo {
namespace {

/// What the system could not do may go well the next time, so it says nothing of the design; but a lack of memory is
/// the file's fault: the process has as much of it for each.
bool isOfSystem(const VLMError& error) {
    return error.domain == systemErrorDomain && error.code != ENOMEM;
}

FactsOutcome refusalOf(const VLMError& error, const std::optional<Sha256>& hash) {
    if (isOfSystem(error)) return std::error_code(error.code, std::generic_category());
    return FileFacts{failureOf(error), hash};
}

std::vector<FactsOutcome> readWith(LastingWorker& worker, std::span<const std::filesystem::path> files) {
    const std::vector<std::string> paths(files.begin(), files.end());
    std::vector<FactsOutcome> outcomes;
    outcomes.reserve(paths.size());
    for (const auto& reply : worker.ask(paths)) {
        const auto* death = std::get_if<WorkerDeath>(&reply);
        if (death != nullptr)
            outcomes.emplace_back(FileFacts{failureOf(errorOf(*death))});
        else
            outcomes.push_back(outcomeOf(std::get<std::string>(reply)));
    }
    return outcomes;
}

}  // namespace

FactsOutcome readFacts(const std::filesystem::path& file) {
    const FileContent content = readFile(file);
    if (content.error) return content.error;
    const Sha256 hash = sha256Of(content.bytes);
    VLMDesign design;
    VLMError error;
    if (!importDesignFromURLerror(design, file, &error, {.givesSystemReason = true, .bytes = content.bytes}))
        return refusalOf(error, hash);
    return FileFacts{factsOfDesign(design), hash};
}

FactsReaders factsReaders(std::size_t count, const WorkerLimits& limits) {
    const WorkerTask::Service serve = [](const std::string& file) {
        VLMError error;
        std::string answer;
        const bool isDone = operation(&error, [&] {
            answer = bytesOf(readFacts(file));
            return true;
        });
        return isDone ? answer : bytesOf(refusalOf(error, std::nullopt));
    };
    auto workers = LastingWorker::some(count, {serve, limits});
    FactsReaders made{.readers = {}, .areConfined = workers.front().isConfined()};
    made.readers.reserve(workers.size());
    for (LastingWorker& worker : workers)
        made.readers.emplace_back([own = std::make_shared<LastingWorker>(std::move(worker))](
                                      std::span<const std::filesystem::path> files) { return readWith(*own, files); });
    return made;
}

std::int64_t readerNumber() {
    return readerNumber(pathOfThisModule());
}

std::int64_t readerNumber(const std::filesystem::path& module) {
    constexpr std::uint64_t spread = 0x9E3779B97F4A7C15U;
    std::error_code error;
    const FileState state = stateOfFile(module, error);
    if (error) throw std::system_error(error);
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(state.modified) * spread ^
                                     static_cast<std::uint64_t>(state.size));
}

}  // namespace velamo
