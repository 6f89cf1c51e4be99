// A cursor that measures how long its statements take.
#pragma once

#include <cstdint>

#include "app/export.h"
#include "data/asynccursor.h"

// Takes the time of every execute by the wall clock: waiting, and a change of the clock meanwhile,
// count. See xRAsyncCursor for how a statement is executed and what is thrown.
class OVIEXT_API xRDorCursor : public xRAsyncCursor {
public:
    // A wall-clock time since 1970.
    struct TimeVal {
        int64_t seconds = 0;
        int64_t microseconds = 0; // 0 to 999,999
    };

    xRDorCursor();
    ~xRDorCursor() override;

    // The time now; 0 when the clock fails.
    static TimeVal startClock();
    // Keeps the time from start to now.
    void stopClock(const TimeVal& start);
    // Milliseconds between two times. Seconds and microseconds are subtracted by themselves and the
    // microseconds divided towards 0.
    static int64_t millisecondsBetween(const TimeVal& start, const TimeVal& end);

    // An empty or null text is executed without taking the time. A text that fails leaves the time
    // 0, a statement that fails leaves it as it was.
    void execute(const char* sql, bool async, bool single);
    // The text in the process locale. Throws DorX (CodeBadCall) when it has a character that the
    // locale does not know.
    void execute(const wchar_t* sql, bool async, bool single);
    void execute(const DorCPP::DorStatement& statement, const DorCPP::BindMap* binds, bool async,
                 bool single);

    // Duration of the latest execute: whole hours, whole minutes of the hour, seconds of the minute
    // with milliseconds as the fraction.
    int getHours() const;
    int getMinutes() const;
    double getSeconds() const;

protected:
    int64_t m_elapsed = 0; // milliseconds
};
