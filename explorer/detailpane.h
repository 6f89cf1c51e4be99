// The rows of a table that refer to the row with the focus in the pane above.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <oviapi/combobox.h>
#include <oviapi/static.h>
#include <oviapi/timer.h>

#include "app/extpanel.h"
#include "explorer/databasesession.h"
#include "explorer/detailrows.h"
#include "explorer/foreignkeys.h"
#include "explorer/rowspane.h"

// A line with the choice of the detail table, and its rows below. Follows the focus of the master
// once it has rested for a moment. What has been typed here is stored, or asked about, before the
// rows go; where the user stays with it, the master's focus goes back.
//
// Points to the master, which must outlive it, and to the connection and the keys until clear.
class DetailPane : public WExtPanel {
public:
    DetailPane(RowsPane& master, TypicalConfirm& deleteRow);
    ~DetailPane() override;

    bool create() override;

    // The master shows another table. Keeps the detail that was chosen last for it.
    void setMaster(const DorCPP::DorConnect& connection, const DatabaseTable& master,
                   const ForeignKeys& keys);
    void clear();
    // The master's focus, or a row of it, may have changed.
    void follow();

    const std::vector<DetailTable>& details() const { return m_details; }
    // The table whose rows are shown; no name for none.
    DatabaseTable table() const;
    bool isReading() const { return m_detail && m_detail->isReading(); }
    // Whether the master's row is not the one whose rows are shown yet.
    bool isBehind() const { return m_rest.isRunning() || isReading(); }
    void cancel();

    RowsPane& rows() { return m_rows; }
    OviAPI::WComboBox& choice() { return m_choice; }
    void loadTexts();

    bool onSize() override;

private:
    OviAPI::SlotResult onChoice(OviAPI::Object*);
    OviAPI::SlotResult onRested(OviAPI::Object*);
    OviAPI::SlotResult onRowBegun(OviAPI::Object*);
    void showDetail(int number);
    void askForRows();
    void showNotice(TextId heading, TextId hint, RowsPane::Words argument = {});
    void takeRows(const DorCPP::DorX* error);
    bool openRows();
    bool masterHasRow();
    void layOut();

    RowsPane& m_master;
    const DorCPP::DorConnect* m_connection = nullptr;
    DatabaseTable m_masterTable;
    std::vector<DetailTable> m_details;
    int m_chosen = -1;                     // index of the detail shown, -1 for none
    std::unique_ptr<DetailRows> m_waiting; // not shown before they have been read once
    DetailRows* m_detail = nullptr;        // owned by m_waiting or by the pane of the rows
    long m_row = 0;                        // of the master, whose rows are shown or asked for
    unsigned long m_edition = 0;           // of the master's rows at that time
    bool m_goingBack = false;              // the master's focus is being put back
    OviAPI::WStatic m_label;
    OviAPI::WComboBox m_choice;
    RowsPane m_rows;
    OviAPI::WTimer m_rest;
};
