// The right side of the main window: the rows of one table, or why there are none.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include <oviapi/timer.h>

#include "explorer/backgroundstatement.h"
#include "explorer/databasesession.h"
#include "explorer/rowspane.h"

class TablePane : public RowsPane {
public:
    explicit TablePane(TypicalConfirm& deleteRow);
    ~TablePane() override;

    // Reads a table of an open database and shows it when its rows are known; what was shown before
    // stays until then, for a moment at most. The connection must live until clear. What has been
    // typed is to be stored or given up before (leave).
    void showTable(const DorCPP::DorConnect& connection, const DatabaseTable& table);
    // Reads the table again; place and widths stay.
    void refresh();
    // Shows a notice and lets go of the connection.
    void clear(TextId heading, TextId hint);

    bool isLoading() const { return m_loading != nullptr; }
    // Stops the reading of the table, if it goes on.
    void cancel();
    const std::wstring& table() const { return m_table.name; }
    const DatabaseTable& source() const { return m_table; }

private:
    struct Loading;

    OviAPI::SlotResult look(OviAPI::Object*);
    void begin(const DatabaseTable& table, bool keepPlace);
    std::wstring sql() const;
    void takeResult();
    void fail(Words reason);

    const DorCPP::DorConnect* m_connection = nullptr;
    DatabaseTable m_table;
    std::unique_ptr<Loading> m_loading;
    OviAPI::WTimer m_timer;
};
