#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace velamo {

/// What one request may take of a worker process before it is ended.
struct WorkerLimits {
    std::chrono::milliseconds time{30'000};         // by the wall clock
    std::uint64_t memory = std::uint64_t{2} << 30;  // bytes of address space; more cannot be allocated
};

/// How a worker process ended in the middle of a request.
struct WorkerDeath {
    int signal = 0;  // 0: it ended by itself
    friend bool operator==(const WorkerDeath&, const WorkerDeath&) = default;
    /// It took more than its time.
    [[nodiscard]] bool isTimeout() const noexcept;
    /// The system's words for the signal.
    [[nodiscard]] std::string description() const;
};

/// Answers requests in a process of its own, so that whatever happens there happens to one request: the process is
/// replaced when it dies or takes too long. It can read files, but not write any, open no network connection and start
/// no program. A small guardian process watches it and stands in for it when it is gone; both end with their owner.
class WorkerProcess {
public:
    /// Texts of at most 64 kB, minus a few bytes. What it throws ends the process.
    using Service = std::function<std::string(const std::string& request)>;

    /// Must be called while the process has one thread: a copy of a process has only that. std::system_error when there
    /// is no process to be had.
    explicit WorkerProcess(const Service& service, const WorkerLimits& limits = {});
    ~WorkerProcess();
    WorkerProcess(const WorkerProcess&) = delete;
    WorkerProcess& operator=(const WorkerProcess&) = delete;

    using Reply = std::variant<std::string, WorkerDeath>;
    /// A reply to each request, in order. The worker finds the next request there when it is done with one, so many at
    /// once are much faster than one by one. One thread at a time asks. std::system_error when the guardian is gone or
    /// a request too long.
    [[nodiscard]] std::vector<Reply> ask(std::span<const std::string> requests);

private:
    void sendRequest(const std::string& request);
    [[nodiscard]] Reply receiveReply(std::uint64_t number);

    int socket_ = -1;
    int guardian_ = -1;
    std::uint64_t number_ = 0;  // of the last request that was sent
};

}  // namespace velamo
