// Rows in a grid, to be looked at and edited, or the reason why there are none.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <oviapi/recordview.h>

#include "app/extpanel.h"
#include "app/typicaloptions.h"
#include "data/dordataset.h"
#include "explorer/actionbar.h"
#include "explorer/noticepanel.h"
#include "explorer/texts.h"
#include "explorer/valuestore.h"

// What the status line says of the pane.
struct PlaceInTable {
    long rows = 0;       // of the table
    long row = 0;        // with the focus, 0 for none
    std::wstring column; // its caption
    std::wstring value;  // what there is to say of the value there, for the user
};

// Asks before a row is deleted and before typed text is given up, and tells what another session
// has done to a row that is edited. Owns the rows; points to the answer that it asks for.
class RowsPane : public WExtPanel {
public:
    // A text in the present language.
    using Words = std::function<std::wstring()>;

    // deleteRow: whether to delete without asking.
    explicit RowsPane(TypicalConfirm& deleteRow);
    ~RowsPane() override;

    bool create() override;

    // What is to be seen has changed: other rows, another cell, another value.
    virtual bool onPlaceChanged();
    // A cell or row has been stored, or a row deleted.
    virtual bool onRowsChanged();
    // A new row has been begun: the moment to set what is known of it.
    virtual bool onRowBegun();
    // The value of a cell is to be shown whole.
    virtual bool onShowValue();

    // Shows these rows instead of those before. keepPlace: row, column and widths stay.
    void showRows(std::unique_ptr<xCDorvexDataSet> rows, const std::wstring& name, bool keepPlace);
    // The rows have been read anew, in the same dataset.
    void rowsReplaced();
    // Shows why there are no rows; argument: of both texts.
    void showNotice(TextId heading, TextId hint, Words argument = {});

    bool hasRows() const { return m_rows != nullptr; }
    xCDorvexDataSet* rows() { return m_rows.get(); }
    // Another number after every change of what the rows are.
    unsigned long edition() const { return m_edition; }
    // The number of the column with this name in its table; 0 for none.
    int columnOf(const std::wstring& name) const;
    PlaceInTable place();
    // The view of the rows; not seen while there is a notice.
    OviAPI::aCRecordView& view() { return m_view; }
    NoticePanel& notice() { return m_notice; }
    // Seen while a change of the user's meets one of another session.
    ActionBar& conflict() { return m_conflict; }
    void fitColumns();
    // The value of the cell with the focus; null where there is none. connection: that of the rows.
    // Throws DorX.
    std::unique_ptr<ValueStore> value(const DorCPP::DorConnect& connection);

    // Stores what has been typed; when that is refused the user is asked whether to give it up.
    // False when he wants to go on with it: then nothing may be taken away from under him.
    bool leave();

    // --- what the user can do to rows; each does nothing where it makes no sense

    bool canAdd();
    bool canChange();  // the cell with the focus
    bool canDefault(); // the same, in a new row
    bool canDelete();
    void addRow();
    // Asks first, unless the answer has been kept.
    void deleteRow();
    void setNull();
    void setDefault();

    // Gives everything in the present language.
    void loadTexts();

    bool onSize() override;

private:
    enum Conflict { NoConflict, RowChanged, RowDeleted };
    enum Action : int { ShowTheirs, KeepMine, GiveUp };

    OviAPI::SlotResult onFocus(OviAPI::Object*, int, long);
    OviAPI::SlotResult onDeleteKey(OviAPI::Object*, long);
    OviAPI::SlotResult onRefused(OviAPI::Object*, int, long row);
    OviAPI::SlotResult onStored(OviAPI::Object*, int, long);
    OviAPI::SlotResult onBegun(OviAPI::Object*, long);
    OviAPI::SlotResult onEnded(OviAPI::Object*);
    OviAPI::SlotResult onOpen(OviAPI::Object*, int, long);
    OviAPI::SlotResult onConflictAction(OviAPI::Object*, int action);
    void showConflict(Conflict conflict);
    bool areWritable();
    bool confirmDelete();
    void rowsHaveChanged();
    std::wstring faultOf(long row);
    void tell();
    void layOut();

    TypicalConfirm& m_deleteRow;
    std::unique_ptr<xCDorvexDataSet> m_rows;
    std::wstring m_name; // of the table
    unsigned long m_edition = 0;
    OviAPI::aCRecordView m_view;
    NoticePanel m_notice;
    ActionBar m_conflict;
    Conflict m_conflictKind = NoConflict;
    TextId m_heading = TextNoticeNoDatabase;
    TextId m_hint = TextNoticeNoDatabaseHint;
    Words m_argument; // of heading and hint; null for none
};

OVIAPI_SIGNAL(RowsPane, onPlaceChanged);
OVIAPI_SIGNAL(RowsPane, onRowsChanged);
OVIAPI_SIGNAL(RowsPane, onRowBegun);
OVIAPI_SIGNAL(RowsPane, onShowValue);
