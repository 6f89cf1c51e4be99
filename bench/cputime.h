// Processor time of this process.
#pragma once

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <vector>

inline double cpuMs()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

inline double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// Median of the processor time that each call takes, ms.
template<class Step>
double medianCpuMs(int steps, Step step)
{
    std::vector<double> times;
    for (int i = 0; i < steps; ++i) {
        const double start = cpuMs();
        step();
        times.push_back(cpuMs() - start);
    }
    return median(std::move(times));
}
