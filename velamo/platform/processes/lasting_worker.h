#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <system_error>
#include <vector>

#include "velamo/platform/processes/worker_process.h"

namespace velamo {

/// There is no worker to be had, or none any more. It is no fault of a request.
class WorkerLoss : public std::system_error {
public:
    explicit WorkerLoss(const std::system_error& reason) : std::system_error(reason) {}
};

/// A worker process that is replaced where it is lost, with its guardian or by somebody else's doing. What it was asked
/// then is asked again, each request that a worker was lost with alone; one that loses two is to blame.
class LastingWorker {
public:
    /// Must be made, and replaced, while the process has one thread. Throws WorkerLoss when there is no process to be
    /// had.
    explicit LastingWorker(const WorkerTask& task);
    /// At most `count` of them, but no more than the system has processes for; throws WorkerLoss when it has none. To
    /// be made while the process has one thread; they are replaced whatever threads there are.
    [[nodiscard]] static std::vector<LastingWorker> some(std::size_t count, const WorkerTask& task);

    /// As WorkerProcess::isConfined, but throws WorkerLoss when the worker is lost.
    [[nodiscard]] bool isConfined();
    /// A reply to each request, in order. Throws WorkerLoss when the system has no process any more, and
    /// std::system_error when a request is too long.
    [[nodiscard]] std::vector<WorkerProcess::Reply> ask(std::span<const std::string> requests);
    /// The process that answered last.
    [[nodiscard]] WorkerProcess& process();

private:
    using Maker = std::function<std::unique_ptr<WorkerProcess>()>;
    explicit LastingWorker(Maker maker);
    [[nodiscard]] WorkerProcess::Reply askAlone(const std::string& request);

    Maker make_;
    std::unique_ptr<WorkerProcess> process_;  // null: lost
};

}  // namespace velamo
