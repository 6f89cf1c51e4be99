// The table view that users of the toolkit would otherwise have, measured by the same steps.
#pragma once

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <vector>

struct ScrollTimes {
    double page = 0; // processor time of one step, ms
    double row = 0;
};

struct ScrollTable {
    long rows = 0;
    int width = 0; // pixels of the window
    int height = 0;
    int rowHeight = 0;
    int columnWidth = 0;
    int steps = 0;
    const wchar_t* font = nullptr;
    int fontSize = 0;
};

// A QTableView over a QSqlTableModel of a new SQLite file with 8 columns of mixed types.
ScrollTimes measurePeer(const ScrollTable& table);

// Median of the processor time that each call takes, ms.
template<class Step>
double medianCpuMs(int steps, Step step)
{
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
    };
    std::vector<double> times;
    for (int i = 0; i < steps; ++i) {
        const double start = now();
        step();
        times.push_back(now() - start);
    }
    std::nth_element(times.begin(), times.begin() + steps / 2, times.end());
    return times[static_cast<size_t>(steps) / 2];
}
