#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace velamo {

/// Threads that turn jobs into results, in whatever order they get done. One thread, the owner's, submits and takes; so
/// that it never waits for itself, it takes results while the pool is full. Where no thread is to be had, it works
/// itself, when it takes.
template <class Job, class Result>
class WorkerPool {
public:
    using Work = std::function<Result(Job&&)>;

    /// One thread for each of `works`, which must not throw, or fewer where the system gives no more; there must be one
    /// work at least. At most `capacity` jobs are in the pool, done or not.
    WorkerPool(std::vector<Work> works, std::size_t capacity) : capacity_(capacity), works_(std::move(works)) {
        threads_.reserve(works_.size());
        while (threads_.size() < works_.size() && startThread(works_[threads_.size()])) continue;
    }
    /// Drops the jobs that no thread has begun.
    ~WorkerPool() {
        {
            const std::lock_guard lock(mutex_);
            isClosed_ = true;
        }
        jobArrived_.notify_all();
        for (std::thread& thread : threads_) thread.join();
    }
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    /// No job may be submitted before a result was taken.
    [[nodiscard]] bool isFull() const noexcept { return inside_ >= capacity_; }
    void submit(Job job) {
        ++inside_;
        {
            const std::lock_guard lock(mutex_);
            jobs_.push_back(std::move(job));
        }
        jobArrived_.notify_one();
    }
    /// Returns a result, after waiting for it if need be, or nullopt when no job is left.
    [[nodiscard]] std::optional<Result> take() {
        if (inside_ == 0) return std::nullopt;
        if (threads_.empty()) return takeOwn();
        std::unique_lock lock(mutex_);
        resultArrived_.wait(lock, [this] { return !results_.empty(); });
        return takeFirst();
    }
    /// A result that is there already.
    [[nodiscard]] std::optional<Result> takeIfDone() {
        const std::lock_guard lock(mutex_);
        return results_.empty() ? std::nullopt : takeFirst();
    }

private:
    /// Returns false when the system has no thread for it.
    bool startThread(const Work& work) {
        try {
            threads_.emplace_back([this, &work] { serve(work); });
            return true;
        } catch (const std::exception&) {
            return false;
        }
    }
    std::optional<Result> takeOwn() {
        Job job = std::move(jobs_.front());
        jobs_.pop_front();
        --inside_;
        return works_.front()(std::move(job));
    }
    std::optional<Result> takeFirst() {
        std::optional<Result> result(std::move(results_.front()));
        results_.pop_front();
        --inside_;
        return result;
    }
    void serve(const Work& work) {
        for (std::unique_lock lock(mutex_);;) {
            jobArrived_.wait(lock, [this] { return isClosed_ || !jobs_.empty(); });
            if (isClosed_) return;
            Job job = std::move(jobs_.front());
            jobs_.pop_front();
            lock.unlock();
            Result result = work(std::move(job));
            lock.lock();
            results_.push_back(std::move(result));
            resultArrived_.notify_one();
        }
    }

    const std::size_t capacity_;
    std::size_t inside_ = 0;  // the owner's thread alone knows it
    std::mutex mutex_;
    std::condition_variable jobArrived_;
    std::condition_variable resultArrived_;
    std::deque<Job> jobs_;
    std::deque<Result> results_;
    bool isClosed_ = false;
    std::vector<Work> works_;
    std::vector<std::thread> threads_;
};

}  // namespace velamo
