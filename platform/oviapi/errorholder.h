// The errors of a dataset's rows.
#pragma once

#include <deque>
#include <map>
#include <string>

#include <oviapi/export.h>
#include <oviapi/string.h>

namespace OviAPI {

// Base of datasets: keeps what went wrong with which row, so that a view can show it in that row
// instead of stopping. The errors of the 1,000 rows that failed last are kept.
class OVIAPI_API aCErrorHolder {
public:
    enum ErrorKind : int {
        NoError = 0,
        Refused = 2, // constraint, right, changed by another
        NoSuchRow = 3,
        Locked = 4,   // locked or deadlock
        Critical = 5, // connection, server, file
        OtherError = 6,
    };

    struct RowError {
        int kind = OtherError;
        long code = 0;       // of the database
        long systemCode = 0; // of the operating system or engine, 0 for none
        aCString text;
    };

    virtual ~aCErrorHolder();

    // Records the error of a row (row 0: of the whole dataset) with the kind set last. Code,
    // system code and kind 0 take the row's error away.
    void setRowError(long row, long code, long systemCode, const wchar_t* text);
    // Null when the row has none. Valid until the next change of the errors.
    const RowError* getRowError(long row) const;
    void clearRowError(long row);
    void clearRowErrors();
    // Rows that have an error, row 0 included.
    size_t rowErrorCount() const { return m_errors.size(); }

    int GetErrorKind() const { return m_errorKind; }
    void SetErrorKind(int kind) { m_errorKind = kind; }

    // Asks for errors to be thrown to the caller instead of being recorded only; false at first.
    bool RaisesErrors() const { return m_raiseErrors; }
    void SetRaiseErrors(bool raise) { m_raiseErrors = raise; }

protected:
    int m_errorKind = NoError;
    bool m_raiseErrors = false;

private:
    static constexpr size_t maxRows = 1000;

    std::map<long, RowError> m_errors;
    std::deque<long> m_order; // rows in the order of their first error
};

} // namespace OviAPI
