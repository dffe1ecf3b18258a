#pragma once

#include <algorithm>
#include <chrono>
#include <vector>

namespace quillmate
{

/// Seconds that the work takes: the median of several runs, so that one interruption does not count.
template<typename Work>
double secondsFor(int runs, Work work)
{
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        const auto start = std::chrono::steady_clock::now();
        work();
        times.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    std::nth_element(times.begin(), times.begin() + runs / 2, times.end());
    return times[static_cast<std::size_t>(runs) / 2];
}

} // namespace quillmate
