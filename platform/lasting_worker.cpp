#include "platform/lasting_worker.h"

#include <csignal>

namespace velamo {
namespace {

using Reply = WorkerProcess::Reply;

bool isFromOutside(const Reply& reply) noexcept {
    const auto* const death = std::get_if<WorkerDeath>(&reply);
    return death != nullptr && death->isFromOutside();
}

}  // namespace

LastingWorker::LastingWorker(const WorkerTask& task)
    : LastingWorker(Maker([task] { return std::make_unique<WorkerProcess>(task); })) {}

std::vector<LastingWorker> LastingWorker::some(std::size_t count, const WorkerTask& task) {
    const auto nursery = std::make_shared<WorkerNursery>(task);
    std::vector<LastingWorker> workers;
    workers.reserve(count);
    while (workers.size() < count) {
        try {
            workers.push_back(LastingWorker(Maker([nursery] { return nursery->makeWorker(); })));
        } catch (const std::system_error&) {
            if (workers.empty()) throw;
            break;
        }
    }
    return workers;
}

WorkerProcess& LastingWorker::process() {
    try {
        if (!process_) process_ = make_();
        return *process_;
    } catch (const std::system_error& reason) {
        throw WorkerLoss(reason);
    }
}

/// The second time.
Reply LastingWorker::askAlone(const std::string& request) {
    auto replies = process().ask({&request, 1});
    if (!replies.empty()) return std::move(replies.front());
    process_.reset();
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
        process_.reset();
        replies.push_back(askAlone(requests[replies.size()]));
    }
    return replies;
}

}  // namespace velamo
