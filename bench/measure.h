// Time by the clock, and what the kernel tells of this process.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>

inline constexpr int runs = 3; // of what is timed; the best is taken

// Of a clock that begins at any time, ms.
inline double clockMs()
{
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(time).count();
}

template<class Work>
double milliseconds(const Work& work)
{
    const double start = clockMs();
    work();
    return clockMs() - start;
}

// The shortest time of several runs.
template<class Work>
double best(const Work& work)
{
    double shortest = milliseconds(work);
    for (int i = 1; i < runs; ++i)
        shortest = std::min(shortest, milliseconds(work));
    return shortest;
}

// A line of /proc/self/status that counts kibibytes, by its key with the colon.
inline double statusMiB(std::string_view key)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(key))
            return std::atof(line.c_str() + key.size()) / 1024;
    }
    return 0;
}
