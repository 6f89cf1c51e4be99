// The rows of a detail table that belong to the row with the focus of a master table.
#pragma once

#include <functional>
#include <memory>

#include <oviapi/timer.h>

#include "data/slavedataset.h"
#include "explorer/backgroundstatement.h"

// Reads them on a worker: the window goes on living, and reading that another row of the master has
// overtaken is given up. The rows before are shown until the new ones are there.
class DetailRows : public xCSlaveDataSet {
public:
    // What is told at the end of a reading: null, or the error.
    using Report = std::function<void(const DorCPP::DorX* error)>;

    // sql: with a parameter for every link.
    DetailRows(const DorCPP::DorConnect& connection, const std::wstring& sql, Report report);
    ~DetailRows() override;

    // Begins to read the rows for a row of the master. Throws DorX.
    void readFor(OviAPI::aCDataSet* master, long row);
    void updateCursor() override;
    bool isReading() const { return m_reading != nullptr; }
    void cancel();

private:
    OviAPI::SlotResult look(OviAPI::Object*);
    void takeResult();

    const DorCPP::DorConnect& m_connection;
    Report m_report;
    std::unique_ptr<BackgroundStatement> m_reading;
    MasterValues m_asked;                         // of the reading
    std::unique_ptr<BackgroundStatement> m_shown; // holds the cursor of the rows
    OviAPI::WTimer m_timer;
};
