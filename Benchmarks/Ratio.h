// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace orvane::benchmarks {

/// Runs the two by turns, so that whatever slows the machine slows both, and prints the ratio of their
/// medians. Each takes nothing and gives a value, which is kept from being optimised away.
template <typename Candidate, typename Baseline>
double ratio(const char *name, int rounds, Candidate candidate, Baseline baseline) {
    using Clock = std::chrono::steady_clock;
    const auto timed = [](auto &work) {
        const auto start = Clock::now();
        [[maybe_unused]] const volatile auto kept = work();
        return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
    };
    timed(candidate), timed(baseline);
    std::vector<double> candidates;
    std::vector<double> baselines;
    for (int round = 0; round < rounds; ++round) {
        candidates.push_back(timed(candidate));
        baselines.push_back(timed(baseline));
    }
    const auto median = [](std::vector<double> &values) {
        std::nth_element(values.begin(), values.begin() + ptrdiff_t(values.size() / 2), values.end());
        return values[values.size() / 2];
    };
    const double candidateTime = median(candidates);
    const double baselineTime = median(baselines);
    std::printf("%-44s %12.1f us %12.1f us   ratio %.2f\n", name, candidateTime, baselineTime,
                candidateTime / baselineTime);
    return candidateTime / baselineTime;
}

} // namespace orvane::benchmarks
