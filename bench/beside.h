#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <limits>

namespace velamo::bench {

template <class Work>
double secondsOf(Work& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Measures the work beside the machine's own limit for it, turn by turn in the same run, so that both meet the same
/// machine. The time is the work's; the counters are the fastest turns in microseconds, which other programs did not
/// disturb, and their ratio.
/// `prepare` comes before each turn and is not measured.
template <class Work, class Prepare, class Limit>
void measureBeside(benchmark::State& state, Work work, Prepare prepare, Limit limit) {
    constexpr double microseconds = 1e6;
    double ofWork = std::numeric_limits<double>::infinity();
    double ofLimit = ofWork;
    for (auto turn : state) {
        static_cast<void>(turn);
        prepare();
        ofLimit = std::min(ofLimit, secondsOf(limit));
        const double seconds = secondsOf(work);
        ofWork = std::min(ofWork, seconds);
        state.SetIterationTime(seconds);
    }
    state.counters["work_us"] = ofWork * microseconds;
    state.counters["limit_us"] = ofLimit * microseconds;
    state.counters["ratio"] = ofWork / ofLimit;
}

template <class Work, class Limit>
void measureBeside(benchmark::State& state, Work work, Limit limit) {
    measureBeside(
        state, work, [] {}, limit);
}

}  // namespace velamo::bench
