// The right side of the main window: the rows of one table, or why there are none.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include <oviapi/recordview.h>
#include <oviapi/timer.h>

#include "app/extpanel.h"
#include "data/dordataset.h"
#include "explorer/backgroundstatement.h"
#include "explorer/databasesession.h"
#include "explorer/noticepanel.h"
#include "explorer/valuestore.h"

// What the status line says of the pane.
struct PlaceInTable {
    long rows = 0;       // of the table
    long row = 0;        // with the focus, 0 for none
    std::wstring column; // its caption
    std::wstring value;  // what there is to say of the value there, for the user
};

class TablePane : public WExtPanel {
public:
    TablePane();
    ~TablePane() override;

    bool create() override;

    // What is to be seen has changed: another table, another cell.
    virtual bool onPlaceChanged();

    // Reads a table of an open database and shows it when its rows are known; what was shown before
    // stays until then, for a moment at most. The connection must live until clear.
    void showTable(const DorCPP::DorConnect& connection, const DatabaseTable& table);
    // Reads the table again; place and widths stay.
    void refresh();
    // Shows a notice and lets go of the connection.
    void clear(TextId heading, TextId hint);

    bool isLoading() const { return m_loading != nullptr; }
    // Stops the reading of the table, if it goes on.
    void cancel();
    bool hasTable() const { return m_data != nullptr; }
    const std::wstring& table() const { return m_table.name; }
    const DatabaseTable& source() const { return m_table; }
    PlaceInTable place();
    // The value of the cell with the focus; null where there is none. Throws DorX.
    std::unique_ptr<ValueStore> value();
    // The view of the rows; not seen while there is a notice.
    OviAPI::aCRecordView& view() { return m_view; }
    NoticePanel& notice() { return m_notice; }
    void fitColumns();

    // Gives the notice in the present language.
    void loadTexts();

    bool onSize() override;

private:
    struct Loading;
    // A text in the present language.
    using Words = std::function<std::wstring()>;

    OviAPI::SlotResult look(OviAPI::Object*);
    OviAPI::SlotResult onFocus(OviAPI::Object*, int, long);
    void begin(const DatabaseTable& table, bool keepPlace);
    std::wstring sql() const;
    void takeResult();
    void fail(Words reason);
    void showNotice(TextId heading, TextId hint, Words argument = {});
    void showRows(std::unique_ptr<BackgroundStatement> statement, bool keepPlace);
    void tell();
    void layOut();

    const DorCPP::DorConnect* m_connection = nullptr;
    DatabaseTable m_table;
    std::unique_ptr<Loading> m_loading;
    std::unique_ptr<BackgroundStatement> m_statement; // holds the cursor of the dataset
    std::unique_ptr<xCDorvexDataSet> m_data;
    OviAPI::aCRecordView m_view;
    NoticePanel m_notice;
    OviAPI::WTimer m_timer;
    TextId m_heading = TextNoticeNoDatabase;
    TextId m_hint = TextNoticeNoDatabaseHint;
    Words m_argument; // of heading and hint; null for none
};

OVIAPI_SIGNAL(TablePane, onPlaceChanged);
