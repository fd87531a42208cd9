#include "reading/confined_reader.h"

#include <cerrno>
#include <charconv>
#include <string>
#include <utility>
#include <vector>

#include "reading/design_bytes.h"
#include "reading/read_design.h"
#include "reading/reader_failures.h"
#include "velamo/model/failure.h"

namespace velamo {
namespace {

/// What stands before the file in a request: '/' for its design, or the number of threads in its side file and '/'.
std::string requestOf(const std::string& what, const std::filesystem::path& file) {
    return what + '/' + file.native();
}

bool readRequested(const std::string& request, VLMDesign& design, VLMError* error) {
    const std::size_t end = request.find('/');
    const std::string file = request.substr(end + 1);
    if (end == 0) return readDesign(design, file, error);
    return operation(error, [&] {
        std::size_t count = 0;
        std::from_chars(request.data(), request.data() + end, count);
        design.setThreads(std::vector<VLMThread>(count));
        design.setUseThreadFile(takeThreadsBeside(design, file));
        if (!design.useThreadFile()) design.threads().clear();
        return true;
    });
}

/// Reads the file and attaches the design. The answer is a system's error that prevented that, or nothing.
std::string readAndAttach(const std::string& request, AttachmentWriter& attachment) {
    VLMDesign design;
    VLMError error;
    VLMError failure;
    const bool isRead = readRequested(request, design, &error);
    const bool isWritten = operation(&failure, [&] {
        const auto reason =
            writeDesignBytes(design, isRead ? VLMError() : error,
                             [&attachment](std::span<const std::byte> bytes) { return attachment.append(bytes); });
        return !reason || failWithSystemError(reason.value(), &failure);
    });
    return isWritten ? "" : std::to_string(failure.code);
}

WorkerTask taskOf(const WorkerLimits& limits) {
    return {WorkerTask::AttachingService(readAndAttach), limits};
}

bool failAsReader(const std::string& answer, VLMError* error) {
    int code = EBADMSG;
    std::from_chars(answer.data(), answer.data() + answer.size(), code);
    failWithSystemError(code, error);
    if (error != nullptr) error->failureReason = "what was read cannot be handed over: " + error->message();
    return false;
}

bool takeAttached(WorkerProcess& worker, VLMDesign& design, const std::filesystem::path& file, VLMError* error) {
    const ByteSource source{.read = [&worker](std::span<std::byte> bytes,
                                              std::uint64_t offset) { return worker.readAttachment(bytes, offset); },
                            .size = worker.sizeOfAttachment()};
    ReadDesign read;
    const bool isDesign = parseDesignBytes(source, read);
    if (!isDesign) return failWithSystemError(EBADMSG, error);
    design = std::move(read.design);
    design.setDesignLocation(file);
    if (read.error.code == 0) return true;
    if (error != nullptr) *error = std::move(read.error);
    return false;
}

}  // namespace

ConfinedReader::ConfinedReader(const WorkerLimits& limits) : worker_(taskOf(limits)) {}

std::vector<ConfinedReader> ConfinedReader::some(std::size_t count, const WorkerLimits& limits) {
    std::vector<ConfinedReader> readers;
    for (LastingWorker& worker : LastingWorker::some(count, taskOf(limits)))
        readers.push_back(ConfinedReader(std::move(worker)));
    return readers;
}

bool ConfinedReader::read(const std::string& request, VLMDesign& design, const std::filesystem::path& file,
                          VLMError* error) {
    bool isRead = false;
    std::optional<WorkerLoss> loss;
    const bool isDone = operation(error, [&] {
        try {
            const auto reply = worker_.ask({&request, 1}).at(0);
            if (const auto* death = std::get_if<WorkerDeath>(&reply)) {
                if (error != nullptr) *error = errorOf(*death);
            } else if (const auto& answer = std::get<std::string>(reply); !answer.empty()) {
                failAsReader(answer, error);
            } else {
                isRead = takeAttached(worker_.process(), design, file, error);
            }
            worker_.process().clearAttachment();
        } catch (const WorkerLoss& caught) {
            loss = caught;
        }
        return true;
    });
    if (loss) throw WorkerLoss(*loss);
    return isDone && isRead;
}

bool ConfinedReader::readDesign(VLMDesign& design, const std::filesystem::path& file, VLMError* error) {
    return read(requestOf("", file), design, file, error);
}

bool ConfinedReader::readThreads(std::vector<VLMThread>& threads, const std::filesystem::path& file, std::size_t count,
                                 VLMError* error) {
    VLMDesign design;
    if (!read(requestOf(std::to_string(count), file), design, file, error)) return false;
    threads.clear();
    if (design.useThreadFile() && design.threads().size() == count) threads = design.threads().all();
    return true;
}

std::optional<DesignAttributes> ConfinedReader::attributesOfFile(const std::filesystem::path& file, VLMError* error) {
    VLMDesign design;
    return readDesign(design, file, error) ? std::optional(attributesOfDesign(design)) : std::nullopt;
}

}  // namespace velamo
