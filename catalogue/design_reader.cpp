#include "catalogue/design_reader.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

#include "reading/read_design.h"
#include "reading/reader_failures.h"
#include "velamo/model/failure.h"
#include "velamo/platform/processes/lasting_worker.h"
#include "velamo/platform/system/file_state.h"

namespace velamo {
namespace {

/// Why the design cannot be imported. What the system could not do may go well the next time, so it says nothing of the
/// design; but a lack of memory is the file's fault: the process has as much of it for each.
ReadOutcome reasonForRefusal(const std::filesystem::path& file) {
    VLMError error;
    VLMDesign design;
    // What was refused and now can be read has been changed meanwhile, or the disk failed for a moment.
    if (readDesign(design, file, &error)) failWithSystemError(EAGAIN, &error);
    if (error.domain == systemErrorDomain && error.code != ENOMEM)
        return std::error_code(error.code, std::generic_category());
    return failureOf(error);
}

ReadOutcome read(PluginHost& host, const std::filesystem::path& file) {
    if (const auto attributes = host.attributesOf(file)) return *attributes;
    return reasonForRefusal(file);
}

/// A lack of memory is the file's fault: the process has as much of it for each.
ReadOutcome readWithin(PluginHost& host, const std::filesystem::path& file) {
    VLMError error;
    ReadOutcome outcome;
    const bool isDone = operation(&error, [&] {
        outcome = read(host, file);
        return true;
    });
    return isDone ? outcome : failureOf(error);
}

/// Outcomes on their way from one process to another of the same program: which it is, then its values one by one.
class OutcomeWriter {
public:
    void operator()(const DesignAttributes& attributes) { put(attributes); }
    void operator()(const DesignFailure& failure) {
        put(failure.code);
        put(failure.domain.size());
        bytes_ += failure.domain + failure.message;
    }
    void operator()(const std::error_code& reason) { put(reason.value()); }

    template <class Value>
    void put(const Value& value) {
        bytes_.append(reinterpret_cast<const char*>(&value), sizeof(Value));
    }
    [[nodiscard]] std::string take() && noexcept { return std::move(bytes_); }

private:
    std::string bytes_;
};

std::string bytesOf(const ReadOutcome& outcome) {
    OutcomeWriter writer;
    writer.put(outcome.index());
    std::visit(writer, outcome);
    return std::move(writer).take();
}

class OutcomeReader {
public:
    explicit OutcomeReader(std::string_view bytes) noexcept : bytes_(bytes) {}

    template <class Value>
    Value take() {
        Value value{};
        const auto taken = takeText(sizeof(Value));
        if (taken.size() == sizeof(Value)) std::memcpy(&value, taken.data(), sizeof(Value));
        return value;
    }
    std::string takeText(std::size_t size) {
        isWhole_ = isWhole_ && size <= bytes_.size();
        const auto taken = bytes_.substr(0, size);
        bytes_.remove_prefix(taken.size());
        return std::string(taken);
    }
    std::string takeRest() { return takeText(bytes_.size()); }
    /// Whether all that was taken was there, and nothing is left.
    [[nodiscard]] bool isWhole() const noexcept { return isWhole_ && bytes_.empty(); }

private:
    std::string_view bytes_;
    bool isWhole_ = true;
};

ReadOutcome takeOutcome(OutcomeReader& reader) {
    const auto index = reader.take<std::size_t>();
    if (index == 0) return reader.take<DesignAttributes>();
    const int code = reader.take<int>();
    if (index != 1) return std::error_code(index == 2 ? code : EBADMSG, std::generic_category());
    std::string domain = reader.takeText(reader.take<std::size_t>());
    return DesignFailure{.domain = std::move(domain), .code = code, .message = reader.takeRest()};
}

/// A worker that a file has taken over may answer anything.
ReadOutcome outcomeOf(std::string_view bytes) {
    OutcomeReader reader(bytes);
    auto outcome = takeOutcome(reader);
    return reader.isWhole() ? std::move(outcome) : std::make_error_code(std::errc::bad_message);
}

std::vector<ReadOutcome> readWith(LastingWorker& worker, std::span<const std::filesystem::path> files) {
    const std::vector<std::string> paths(files.begin(), files.end());
    std::vector<ReadOutcome> outcomes;
    outcomes.reserve(paths.size());
    for (const auto& reply : worker.ask(paths)) {
        const auto* death = std::get_if<WorkerDeath>(&reply);
        outcomes.push_back(death != nullptr ? failureOf(errorOf(*death)) : outcomeOf(std::get<std::string>(reply)));
    }
    return outcomes;
}

}  // namespace

DesignFailure failureOf(const VLMError& error) {
    return {.domain = std::string(error.domain), .code = error.code, .message = error.message()};
}

PluginReaders pluginReaders(const std::filesystem::path& module, std::size_t count, const WorkerLimits& limits) {
    const auto host = std::make_shared<PluginHost>(module);  // each process gets its own copy
    const WorkerTask::Service serve = [host](const std::string& file) { return bytesOf(readWithin(*host, file)); };
    auto workers = LastingWorker::some(count, {serve, limits});
    PluginReaders made{.readers = {}, .areConfined = workers.front().isConfined()};
    made.readers.reserve(workers.size());
    for (LastingWorker& worker : workers)
        made.readers.emplace_back([own = std::make_shared<LastingWorker>(std::move(worker))](
                                      std::span<const std::filesystem::path> files) { return readWith(*own, files); });
    return made;
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
