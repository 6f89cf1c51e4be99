// The table view that users of the toolkit would otherwise have, measured by the same steps.
#pragma once

#include "cputime.h"

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
