// The same form and dialog of the toolkit's own classes, measured by the same steps.
#pragma once

#include <vector>

#include "cputime.h"

namespace Forms {

// The form: chains of panels, each inside the one before it with the same controls around it.
inline constexpr int chains = 10;
inline constexpr int panelsDeep = 10;
inline constexpr int controlsInPanel = 9; // three labels, fields and buttons; with the panel 10
inline constexpr int width = 1000;        // px
inline constexpr int height = 700;
inline constexpr int controlWidth = 90;
inline constexpr int controlHeight = 22;
inline constexpr int controlStep = 24;
inline constexpr int chainStep = 98;

// The dialog: a label, a field, a check box and two buttons in a panel.
inline constexpr int dialogWidth = 400;
inline constexpr int dialogHeight = 160;
inline constexpr int dialogs = 1000;

inline constexpr const wchar_t* font = L"Helvetica";
inline constexpr int fontSize = 10;

struct DialogTimes {
    std::vector<double> hundreds;  // ms of processor time for each hundred dialogs
    std::vector<long> residentKiB; // after 100, 500 and 1,000
};

long residentKiB();

// Calls the step for each dialog.
template<class Step>
DialogTimes measureDialogs(Step step)
{
    DialogTimes times;
    double start = cpuMs();
    for (int i = 1; i <= dialogs; ++i) {
        step();
        if (i % 100 != 0)
            continue;
        times.hundreds.push_back(cpuMs() - start);
        if (i == 100 || i == 500 || i == 1000)
            times.residentKiB.push_back(residentKiB());
        start = cpuMs();
    }
    return times;
}

// One change of the font of everything in the form, repaint included, ms of processor time.
double peerFontChange(int steps);
DialogTimes peerDialogs();

} // namespace Forms
