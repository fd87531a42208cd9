#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <variant>
#include <vector>

namespace velamo {

/// What one request may take of a worker process before it is ended.
struct WorkerLimits {
    std::chrono::milliseconds time{30'000};         // by the wall clock
    std::uint64_t memory = std::uint64_t{2} << 30;  // bytes of address space; more cannot be allocated
    bool isConfinedOnly = false;                    // where the system cannot confine it, it ends before any request
};

/// How a worker process ended in the middle of a request.
struct WorkerDeath {
    int signal = 0;  // 0: it ended by itself
    friend bool operator==(const WorkerDeath&, const WorkerDeath&) = default;
    /// It took more than its time.
    [[nodiscard]] bool isTimeout() const noexcept;
    /// Somebody else ended it: the signal is none that comes of what a process does. (The system does that when memory
    /// runs out, to whatever process it likes.)
    [[nodiscard]] bool isFromOutside() const noexcept;
    /// The system's words for the signal.
    [[nodiscard]] std::string description() const;
};

/// Where a worker puts what is too long for an answer.
class AttachmentWriter {
public:
    explicit AttachmentWriter(int file) noexcept : file_(file) {}
    /// Appends the bytes. Returns the system's reason when there is no room for them (see WorkerLimits::memory).
    [[nodiscard]] std::error_code append(std::span<const std::byte> bytes) noexcept;
    [[nodiscard]] std::uint64_t size() const noexcept { return static_cast<std::uint64_t>(size_); }

private:
    int file_;
    std::int64_t size_ = 0;
};

/// What a worker process does.
struct WorkerTask {
    /// Texts of at most 64 kB, minus a few bytes. What it throws ends the process.
    using Service = std::function<std::string(const std::string& request)>;
    using AttachingService = std::function<std::string(const std::string& request, AttachmentWriter& attachment)>;

    WorkerTask(Service service, const WorkerLimits& limits = {});
    WorkerTask(AttachingService service, const WorkerLimits& limits = {});

    AttachingService service;
    WorkerLimits limits;
    bool hasAttachment;
};

/// Answers requests in a process of its own, so that whatever happens there happens to one request: the process is
/// replaced when it dies or takes too long. It can read files and nothing else (see confinement.h), has nothing open
/// that its owner has, and belongs to no terminal. A small guardian process watches it and stands in for it when it is
/// gone; both end with their owner. The owner itself stops waiting two seconds after a request's time: even a worker
/// that has switched its alarm off holds nobody up.
class WorkerProcess {
public:
    using Service = WorkerTask::Service;

    /// Must be called while the process has one thread: a copy of a process has only that. Throws std::system_error
    /// when there is no process to be had.
    explicit WorkerProcess(const WorkerTask& task);
    explicit WorkerProcess(const Service& service, const WorkerLimits& limits = {})
        : WorkerProcess(WorkerTask(service, limits)) {}
    ~WorkerProcess();
    WorkerProcess(const WorkerProcess&) = delete;
    WorkerProcess& operator=(const WorkerProcess&) = delete;

    /// Whether the system refuses the process everything but reading. Waits until the process is ready; throws
    /// std::system_error when it was lost before.
    [[nodiscard]] bool isConfined();

    using Reply = std::variant<std::string, WorkerDeath>;
    /// A reply to each request, in order; to the first ones only where the guardian is gone, and so the worker with it.
    /// The worker finds the next request there when it is done with one, so many at once take 70 % of the time of one
    /// by one. One thread at a time asks. Throws std::system_error when a request is too long.
    [[nodiscard]] std::vector<Reply> ask(std::span<const std::string> requests);

    /// Whether a worker that was lost may have been lost by a request: one could be sent, and it was not the system
    /// that refused to take the answer.
    [[nodiscard]] bool mayBlameRequest() const noexcept { return number_ > 0 && !hasSocketFailed_; }

    /// Bytes of the attachment of the last answer, from the offset on, as many as there are; for a task that has one.
    /// It is the worker's to change: read it once. Gives the system's reason when it cannot be read, EIO behind the
    /// file's end.
    [[nodiscard]] std::error_code readAttachment(std::span<std::byte> bytes, std::uint64_t offset) const noexcept;
    [[nodiscard]] std::uint64_t sizeOfAttachment() const noexcept;
    /// Gives its memory back.
    void clearAttachment() noexcept;

private:
    friend class WorkerNursery;
    struct Ends;
    WorkerProcess(const Ends& ends, std::chrono::milliseconds time) noexcept;
    void abandon() noexcept;
    [[nodiscard]] bool sendRequest(const std::string& request);
    [[nodiscard]] std::optional<Reply> receiveReply(std::uint64_t number);

    int socket_ = -1;
    int attachment_ = -1;
    int guardian_ = -1;               // -1: another process's child
    std::chrono::milliseconds time_;  // that a request may take
    std::uint64_t number_ = 0;        // of the last request that was sent
    std::uint64_t attached_ = 0;      // bytes, as the last answer said
    std::optional<bool> isConfined_;  // as the process said
    bool hasSocketFailed_ = false;
};

/// Makes worker processes of one kind at any time, for a process that may have many threads by then: a process of one
/// thread, copied from this one at the start, makes them.
class WorkerNursery {
public:
    /// Must be called while the process has one thread. Throws std::system_error when there is no process to be had.
    explicit WorkerNursery(const WorkerTask& task);
    /// Ends all workers that it made.
    ~WorkerNursery();
    WorkerNursery(const WorkerNursery&) = delete;
    WorkerNursery& operator=(const WorkerNursery&) = delete;

    /// Any thread may ask. Throws std::system_error when there is no process to be had.
    [[nodiscard]] std::unique_ptr<WorkerProcess> makeWorker();

private:
    int socket_ = -1;
    int process_ = -1;
    bool hasAttachment_;
    std::chrono::milliseconds time_;
    std::mutex mutex_;
};

}  // namespace velamo
