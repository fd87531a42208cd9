#include "velamo/platform/processes/lasting_worker.h"

#include <csignal>

namespace velamo {
namespace {

using Reply = WorkerProcess::Reply;

/// What the body gives; having no process is a loss.
template <class Body>
auto orLoss(const Body& body) {
    try {
        return body();
    } catch (const std::system_error& reason) {
        throw WorkerLoss(reason);
    }
}

bool isFromOutside(const Reply& reply) noexcept {
    const auto* const death = std::get_if<WorkerDeath>(&reply);
    return death != nullptr && death->isFromOutside();
}

}  // namespace

LastingWorker::LastingWorker(const WorkerTask& task)
    : LastingWorker(Maker([task] { return std::make_unique<WorkerProcess>(task); })) {}

LastingWorker::LastingWorker(Maker maker) : make_(std::move(maker)), process_(orLoss(make_)) {}

std::vector<LastingWorker> LastingWorker::some(std::size_t count, const WorkerTask& task) {
    const auto nursery = orLoss([&task] { return std::make_shared<WorkerNursery>(task); });
    std::vector<LastingWorker> workers;
    workers.reserve(count);
    while (workers.size() < count) {
        try {
            LastingWorker worker(Maker([nursery] { return nursery->makeWorker(); }));
            static_cast<void>(worker.isConfined());  // there may be a guardian to be had, and no worker
            workers.push_back(std::move(worker));
        } catch (const WorkerLoss&) {
            if (workers.empty()) throw;
            break;
        }
    }
    return workers;
}

WorkerProcess& LastingWorker::process() {
    if (!process_) process_ = orLoss(make_);
    return *process_;
}

bool LastingWorker::isConfined() {
    try {
        return process().isConfined();
    } catch (const WorkerLoss&) {
        throw;
    } catch (const std::system_error&) {
        process_.reset();  // another one may live
    }
    return orLoss([this] { return process().isConfined(); });
}

/// The second time, and of another worker: the one that was lost may have gone before it saw the request.
Reply LastingWorker::askAlone(const std::string& request) {
    process_.reset();
    auto replies = process().ask({&request, 1});
    if (!replies.empty()) return std::move(replies.front());
    const bool isToBlame = process().mayBlameRequest();
    process_.reset();
    if (!isToBlame) throw WorkerLoss(std::system_error(std::make_error_code(std::errc::connection_reset)));
    return WorkerDeath{SIGKILL};
}

std::vector<Reply> LastingWorker::ask(std::span<const std::string> requests) {
    std::vector<Reply> replies;
    replies.reserve(requests.size());
    while (replies.size() < requests.size()) {
        auto some = process().ask(requests.subspan(replies.size()));
        for (Reply& reply : some)
            replies.push_back(isFromOutside(reply) ? askAlone(requests[replies.size()]) : std::move(reply));
        if (replies.size() == requests.size()) break;
        replies.push_back(askAlone(requests[replies.size()]));
    }
    return replies;
}

}  // namespace velamo
