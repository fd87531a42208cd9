#include "reading/facts_reader.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string>
#include <utility>

#include "reading/archive_designs.h"
#include "reading/archive_members.h"
#include "reading/facts_bytes.h"
#include "reading/reader_failures.h"
#include "velamo/formats/format.h"
#include "velamo/formats/import.h"
#include "velamo/model/failure.h"
#include "velamo/platform/archives/archive_path.h"
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

/// What is wrong with an archive itself has words for it.
bool isOfSystem(const ArchiveError& error) noexcept {
    return error && error.words.empty();
}

FileOutcome refusalOf(const VLMError& error, const std::optional<Sha256>& hash) {
    if (isOfSystem(error)) return std::error_code(error.code, std::generic_category());
    return FileFacts{failureOf(error), hash};
}

/// What is known of the file of these bytes, which `import` reads into a design.
template <class Import>
FileOutcome factsOfBytes(std::span<const std::uint8_t> bytes, const Import& import) {
    const Sha256 hash = sha256Of(bytes);
    VLMDesign design;
    VLMError error;
    if (!import(design, &error)) return refusalOf(error, hash);
    return FileFacts{factsOfDesign(design), hash};
}

FactsOutcome asFactsOutcome(FileOutcome outcome) {
    return std::visit([](auto& value) { return FactsOutcome(std::move(value)); }, outcome);
}

DesignFailure failureOf(const ArchiveError& error) {
    VLMError slot;
    failAsArchive(error, &slot);
    return failureOf(slot);
}

/// Whatever went wrong, it did with the bytes in memory: the member's own.
FileFacts factsOfMember(const ArchivedDesign& design) {
    if (design.error) return {.content = failureOf(design.error)};
    FileOutcome outcome = outcomeOf(design.made);
    if (auto* facts = std::get_if<FileFacts>(&outcome)) return std::move(*facts);
    VLMError error;
    failWithSystemError(std::get<std::error_code>(outcome).value(), &error);
    return {.content = failureOf(error)};
}

bool isProtected(const ArchivedDesign& design) {
    return design.error.words == errorOf(ArchiveFault::protectedByPassword).words;
}

/// A location within the archive, also for a name that leads out of it, which has a row that says so.
std::string insideLocation(const std::string& location) {
    const bool isAbsolute = location.starts_with('/');
    std::string inside = isAbsolute ? "(root)" : "";
    for (const auto& part : std::filesystem::path(location).relative_path()) {
        if (part.empty() || part == ".") continue;
        inside += (inside.empty() ? "" : "/") + (part == ".." ? "(..)" : part.native());
    }
    return inside;
}

FactsOutcome factsOfArchive(const std::filesystem::path& file) {
    const auto found = designsOfArchive(file, [](const ArchivedDesign& design, auto bytes, auto sideFile) {
        return bytesOf(factsOfBytes(bytes, [&](VLMDesign& read, VLMError* error) {
            return importDesignFromBytes(read, bytes, extensionOf(design.location), error, sideFile);
        }));
    });
    if (isOfSystem(found.error)) return found.error.reason;
    ArchiveFacts facts;
    // Its owner has one thing to be told of it.
    if (!found.designs.empty() && std::all_of(found.designs.begin(), found.designs.end(), isProtected)) {
        facts.failure = failureOf(found.designs.front().error);
        return facts;
    }
    std::size_t size = 0;
    for (const ArchivedDesign& design : found.designs) {
        if (isOfSystem(design.error)) return design.error.reason;
        size += design.made.size() + design.location.size() + design.name.size();
        if (size > mostBytesOfArchiveFacts) {
            facts.failure = DesignFailure{std::string(systemErrorDomain), EFBIG, "more is in it than can be kept"};
            return facts;
        }
        facts.members.push_back({.location = insideLocation(design.location),
                                 .name = design.name,
                                 .modified = design.modified,
                                 .size = design.size,
                                 .facts = factsOfMember(design)});
    }
    if (found.error) facts.failure = failureOf(found.error);
    return facts;
}

/// Answers with what is known of a file, or attaches what is known of an archive and answers nothing.
std::string answer(const std::string& file, AttachmentWriter& attachment) {
    VLMError error;
    std::string answer;
    const bool isDone = operation(&error, [&] {
        if (!hasArchiveName(file)) {
            answer = bytesOf(readFileFacts(file));
            return true;
        }
        const FactsOutcome outcome = factsOfArchive(file);
        const auto* archive = std::get_if<ArchiveFacts>(&outcome);
        if (archive == nullptr) return failWithSystemError(std::get<std::error_code>(outcome).value(), &error);
        const std::string bytes = bytesOf(*archive);
        const auto reason = attachment.append(std::as_bytes(std::span(bytes)));
        return !reason || failWithSystemError(reason.value(), &error);
    });
    return isDone ? answer : bytesOf(refusalOf(error, std::nullopt));
}

FactsOutcome attachedTo(WorkerProcess& worker) {
    constexpr std::size_t room = 2;  // names and their places in lists, besides
    const std::uint64_t size = worker.sizeOfAttachment();
    if (size > room * mostBytesOfArchiveFacts) return std::make_error_code(std::errc::bad_message);
    std::string bytes(size, '\0');
    const auto reason = worker.readAttachment(std::as_writable_bytes(std::span(bytes)), 0);
    worker.clearAttachment();
    if (reason) return reason;
    auto archive = archiveFactsOf(bytes);
    return archive ? FactsOutcome(*std::move(archive)) : std::make_error_code(std::errc::bad_message);
}

FactsOutcome outcomeIn(const WorkerProcess::Reply& reply) {
    if (const auto* death = std::get_if<WorkerDeath>(&reply)) return FileFacts{failureOf(errorOf(*death))};
    return asFactsOutcome(outcomeOf(std::get<std::string>(reply)));
}

/// An archive's answer would be lost with that of the next one.
FactsOutcome readArchiveWith(LastingWorker& worker, const std::string& file) {
    const auto reply = worker.ask({&file, 1}).at(0);
    const auto* text = std::get_if<std::string>(&reply);
    return text != nullptr && text->empty() ? attachedTo(worker.process()) : outcomeIn(reply);
}

std::vector<FactsOutcome> readWith(LastingWorker& worker, std::span<const std::filesystem::path> files) {
    const std::vector<std::string> paths(files.begin(), files.end());
    std::vector<FactsOutcome> outcomes;
    outcomes.reserve(paths.size());
    const auto isArchive = [](const std::string& path) { return hasArchiveName(path); };
    for (auto rest = std::span(paths); !rest.empty();) {
        const auto next = std::find_if(rest.begin(), rest.end(), isArchive) - rest.begin();
        for (const auto& reply : worker.ask(rest.first(static_cast<std::size_t>(next))))
            outcomes.push_back(outcomeIn(reply));
        rest = rest.subspan(static_cast<std::size_t>(next));
        if (rest.empty()) break;
        outcomes.push_back(readArchiveWith(worker, rest.front()));
        rest = rest.subspan(1);
    }
    return outcomes;
}

}  // namespace

FileOutcome readFileFacts(const std::filesystem::path& file) {
    const FileContent content = readFile(file);
    if (content.error) return content.error;
    return factsOfBytes(content.bytes, [&](VLMDesign& design, VLMError* error) {
        return importDesignFromURLerror(design, file, error, {.givesSystemReason = true, .bytes = content.bytes});
    });
}

FactsOutcome readFacts(const std::filesystem::path& file) {
    return hasArchiveName(file) ? factsOfArchive(file) : asFactsOutcome(readFileFacts(file));
}

FactsReaders factsReaders(std::size_t count, const WorkerLimits& limits) {
    auto workers = LastingWorker::some(count, {WorkerTask::AttachingService(answer), limits});
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
