#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace velamo::bench {

template <class Work>
double secondsOf(Work& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

inline double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Measures the work beside the machine's own limit for it, turn by turn in the same run, so that both meet the same
/// machine. The time is the work's; the counters are the medians in microseconds and their ratio.
template <class Work, class Limit>
void measureBeside(benchmark::State& state, Work work, Limit limit) {
    constexpr double microseconds = 1e6;
    std::vector<double> ofWork;
    std::vector<double> ofLimit;
    for (auto turn : state) {
        static_cast<void>(turn);
        ofLimit.push_back(secondsOf(limit));
        ofWork.push_back(secondsOf(work));
        state.SetIterationTime(ofWork.back());
    }
    state.counters["work_us"] = median(ofWork) * microseconds;
    state.counters["limit_us"] = median(ofLimit) * microseconds;
    state.counters["ratio"] = median(ofWork) / median(ofLimit);
}

}  // namespace velamo::bench
