// A statement that runs while the window goes on living.
#pragma once

#include <string>

#include <dorcpp/cursor.h>

// Runs on a worker from construction on. Its end is to be looked for from a timer: nothing is
// called. A statement that goes while it runs is cancelled.
class BackgroundStatement {
public:
    // Throws DorX.
    BackgroundStatement(const DorCPP::DorConnect& connection, const std::wstring& sql, int mode);
    // With parameters, whose values are copied.
    BackgroundStatement(const DorCPP::DorConnect& connection, const DorCPP::DorStatement& statement,
                        const DorCPP::BindMap& values, int mode);
    ~BackgroundStatement();
    BackgroundStatement(const BackgroundStatement&) = delete;
    BackgroundStatement& operator=(const BackgroundStatement&) = delete;

    bool isDone() const;
    // Asks for an early end, with an error.
    void cancel() { m_cursor.close(); }
    // The cursor with the answer. Throws the DorX that the statement ended with. Only when done.
    DorCPP::DorCursor& result();

private:
    class DoneFlag;

    DorCPP::DorCursor m_cursor;
    DoneFlag* m_flag; // freed by whoever comes second, the worker or this object
};
