#include "reading/confined_reader.h"

#include <cerrno>
#include <charconv>
#include <string>

#include "reading/design_bytes.h"
#include "reading/read_design.h"
#include "reading/reader_failures.h"

namespace velamo {
namespace {

/// Reads the file and attaches the design. The answer is a system's error that prevented that, or nothing.
std::string readAndAttach(const std::string& file, AttachmentWriter& attachment) {
    VLMDesign design;
    VLMError error;
    VLMError failure;
    const bool isRead = readDesign(design, file, &error);
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
    return failWithSystemError(code, error);
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

bool ConfinedReader::readDesign(VLMDesign& design, const std::filesystem::path& file, VLMError* error) {
    bool isRead = false;
    std::optional<WorkerLoss> loss;
    const bool isDone = operation(error, [&] {
        try {
            const std::string request = file.native();
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

std::optional<DesignAttributes> ConfinedReader::attributesOfFile(const std::filesystem::path& file, VLMError* error) {
    VLMDesign design;
    return readDesign(design, file, error) ? std::optional(attributesOfDesign(design)) : std::nullopt;
}

}  // namespace velamo
