// A table of rows and columns over any dataset.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <oviapi/apswnd.h>
#include <oviapi/clientareabroker.h>
#include <oviapi/dataset.h>
#include <oviapi/export.h>
#include <oviapi/recordgeometry.h>
#include <oviapi/timer.h>

namespace OviAPI {

class RecordEditor;
struct RecordFaces;

// Shows the rows that fit into the window and asks the dataset for no others: cost and memory do
// not depend on the number of rows. A row that cannot be fetched shows its error in its place and
// is not asked for again until the view is shown anew.
//
// Keys: arrows, Page Up, Page Down, Home, End, with Control to the ends of the table, Tab and
// Shift+Tab cell by cell; with Shift they extend the selection. Control+A selects everything,
// Control+Space whole columns, Shift+Space whole rows, Control+C copies (see recordcopy.h), with
// Shift including the captions.
//
// Where cells may be edited (SetReadOnly): what is typed replaces the value, F2, Enter and a double
// click open the editor on it, Control+V with what was copied, Alt+Down with its list. Enter stores
// and goes down, the keys above store and move, Escape takes back. What is refused stays in the
// editor, with a sentence beside it. Space switches a check mark, Control+0 sets NULL. Insert, and
// Down on the last row, begin the new row; Control+Shift+0 leaves its cell to the server, leaving
// the row posts it, Escape takes it away. What leaves the cell or the row by the mouse stores, too.
//
// Columns and rows are counted from 1. Points to its dataset and does not own it; owns its broker.
class OVIAPI_API aCRecordView : public virtual aCApsWnd, private aCDataSetViewer {
public:
    aCRecordView();
    ~aCRecordView() override;

    bool create() override;

    // --- what is shown

    // Null takes the dataset away. Columns that have no width get one. show: draw it at once; else
    // the next ReShow does. Returns whether there is a dataset now.
    virtual bool SetDataSet(aCDataSet* dataSet, bool show);
    aCDataSet* GetDataSet() const { return m_dataSet; }
    int GetColCount() const;
    long GetRowCount() const;
    // repaint 0: only the measures are taken anew.
    virtual bool SetFont(Font font, short repaint);
    void setFont(const Font& font) override;
    // Shows the dataset anew. part: 0 everything, 1 the header, 2 the cells. toStart: from the
    // first row and column on; else row, column and selection stay where they are, as far as they
    // still exist. layout: measures and scroll bars are computed again. repaint: the area is
    // painted again, null for all of it.
    virtual void ReShow(short part, bool toStart, bool layout, bool repaint, const Rect* area);
    enum ListBoxMode : int { OneWholeRow = 2 };
    // One whole row is selected and moved as a bar. mode: ListBoxMode; no other number has an
    // effect.
    void SetListBoxMode(bool on, int mode);
    bool IsListBox() const { return m_listBox; }

    // --- focus and selection

    long GetRow() const { return m_selection.row(); } // 0 for none
    int GetCol() const { return m_selection.col(); }
    // Moves the focus and scrolls to it; the selection is that cell. False when there is none.
    virtual bool SetFocusCell(int col, long row);
    bool SetRow(long row) { return SetFocusCell(GetCol() == 0 ? 1 : GetCol(), row); }
    // Extends the selection to the cell.
    bool ExtendTo(int col, long row);
    void SelectAll();
    void SelectRows();
    void SelectColumns();
    RecordSelection::Range GetSelection() const;
    // Copies the selection to the clipboard as text and as a table. Returns the number of rows
    // copied; a selection of more than a million cells is cut.
    long Copy(bool captions);

    // --- editing; true at first: nothing can be edited

    void SetReadOnly(bool readOnly);
    bool IsReadOnly() const;
    // Opens the editor of a cell; false when there is none afterwards. Then a sentence beside the
    // cell says why, or the value has been handed to onOpenValue.
    bool EditCell(int col, long row);
    bool IsEditing() const;
    // An editor whose text has been changed, or a new row in which something has been entered.
    bool HasPendingEdit() const;
    // Stores the text of the editor and posts the new row. True when nothing is pending any more;
    // to be called before the dataset is sorted, opened again or closed. Throws what the dataset
    // throws, when it raises errors; the text stays in the editor then, too.
    bool FinishEdit();
    // Takes the editor away without storing, and the new row.
    void GiveUpEdit();
    // Begins the new row, behind the last one, and moves the focus there.
    bool AppendRow();
    // Without asking. The new row is taken away.
    bool DeleteFocusedRow();
    bool SetFocusedNull();
    bool SetFocusedDefault(); // in the new row only
    // After a refusal because another session has changed the row: stores over it all the same
    // (KeepMine), or shows what is stored now beside the editor, which keeps its text (ShowTheirs;
    // storing is then possible again). False, with the row's error, when that cannot be done.
    bool KeepMine();
    bool ShowTheirs();

    // --- scrolling

    long GetFirstShownRow() const { return m_firstRow; } // 1 even when there are no rows
    // The last row that is shown whole; 0 without rows.
    long GetLastVisibleRow() const;
    // Rows that fit whole into the window, one at least.
    long GetRowOnPage() const;
    void ScrollToRow(long row);
    // As little as it takes to see the cell.
    void ScrollToCell(int col, long row);

    // --- places, pixels of the client area

    // The cells of a column from the header down, or its header cell. visible, where given: the
    // part that is seen. False when there is no such column.
    bool GetColRect(int col, Rect& rect, Rect* visible, bool header) const;
    // False for a row that is not on the screen.
    bool GetClientCellRect(int col, long row, Rect& rect) const;
    Rect GetRowHeaderRect(long row) const;
    // 0 for none. The header belongs to the column below it.
    int GetColFromPoint(int x, int y) const;
    long GetRowFromPoint(int x, int y) const;
    // The column whose right edge in the header is near enough to be dragged, 0 for none.
    int GetEdgeFromPoint(int x, int y) const;
    // Where a picture stands in a header or cell.
    Rect GetImageRect(const Rect& inside, const Picture& picture) const;

    // --- cells

    size_t GetCellText(int col, long row, wchar_t* text, size_t size);
    aCString GetCellText(int col, long row);
    const void* GetCellData(int col, long row);
    // Number of a cell's picture in the list of images, from 0; -1 for none.
    virtual int GetImageIndex(int col, long row);
    // Null for none.
    const Picture* GetCellImage(int col, long row);
    const Picture* GetHeaderImage(int col) const;
    // What stands in a row's header.
    virtual aCString GetRowCaption(long row);
    // What stands in the place of a value that is NULL, left to the server or a large object; empty
    // for a value.
    aCString GetCellWord(int col, long row);
    // Why the row is not shown; empty when it is.
    aCString GetRowFault(long row);

    // What stands in the middle of a view that has nothing to show.
    virtual aCString GetEmptyText();

    void SetHeaderImages(std::vector<Picture> images) { m_headerImages = std::move(images); }
    bool HasHeaderImages() const { return !m_headerImages.empty(); }
    void SetCellImages(std::vector<Picture> images) { m_cellImages = std::move(images); }

    // --- measures

    aCClientAreaBroker* GetBroker() const { return m_broker.get(); }
    void SetBroker(std::unique_ptr<aCClientAreaBroker> broker);
    // The mode and character limit for SetColAlignment: all, 100 characters at first.
    short GetColAlignMode() const { return m_alignMode; }
    short GetColAlignChars() const { return m_alignChars; }
    void SetColAlignment(short mode, short maxChars);
    // Fits one column to what it shows on this page.
    void FitColumn(int col);
    void SetColWidth(int col, int width);
    void ShowRowHeaders(bool shown);
    bool HasRowHeaders() const { return m_rowHeaders; }
    // Pictures are drawn at most this wide and high, pixels; 32 at first.
    void SetPictureLimit(int pixels) { m_pictureLimit = pixels; }
    int GetPictureLimit() const { return m_pictureLimit; }
    // Columns get 18 instead of 8 pixels more than their content needs.
    void SetWideMargin(bool wide) { m_wideMargin = wide; }
    bool IsWideMargin() const { return m_wideMargin; }
    // The row header gets 10 pixels more.
    void SetWideRowHeader(bool wide) { m_wideRowHeader = wide; }
    bool IsWideRowHeader() const { return m_wideRowHeader; }
    // Of cells and headers that have none of their own.
    Font GetCellFont(int col) const;
    Font GetHeaderFont(int col) const;
    Font GetRowFont() const { return font(); }

    // While set, a press on a header means something else: slots of the mouse signals leave it
    // alone. The view sets it while a column edge is pressed.
    bool HeaderActionsSuppressed() const { return m_suppressHeader; }
    void SuppressHeaderActions(bool suppress) { m_suppressHeader = suppress; }

    // --- signals

    // The focus has come to another row.
    virtual bool onRowGetFocus(long previous, long row);
    virtual bool onCellGetFocus(int col, long row);
    // A mouse button has been pressed on a header, not on an edge. Comes with the default handling
    // of onLButtonDown and onRButtonDown.
    virtual bool onHeaderLButtonDown(int col);
    virtual bool onHeaderRButtonDown(int col);
    virtual bool onCellDblClk(int col, long row);
    // The user has given a column another width.
    virtual bool onColResized(int col);
    virtual bool onSelectionChanged();
    // The user wants to delete a row. The default deletes nothing: the application asks, and then
    // calls DeleteFocusedRow.
    virtual bool onDeleteRowKey(long row);
    // A store has been refused, by the column's type or by the dataset (see its row error). The
    // editor, if there is one, is still open. col 0: the new row as a whole; its error is that of
    // row 0.
    virtual bool onEditRefused(int col, long row);
    virtual bool onEditStored(int col, long row); // col 0: the new row as a whole
    // An editor or the new row has gone, and nothing of it has been stored.
    virtual bool onEditEnded();
    // The new row has been begun. What is stored into its cells now is not counted as entered: with
    // nothing else the row goes when the focus leaves it.
    virtual bool onRowBegun(long row);
    // The user wants to see or edit a value that does not show or fit in its cell: a large object,
    // several lines, a long text, a value that is cut. True when it has been opened.
    virtual bool onOpenValue(int col, long row);

    bool onKeyDown(VirtualKey key) override;
    bool onChar(wchar_t character) override;
    bool onLButtonDown(int x, int y, long flags) override;
    bool onLButtonUp(int x, int y, long flags) override;
    bool onLButtonDblClk(int x, int y, long flags) override;
    bool onRButtonDown(int x, int y, long flags) override;
    bool onMouseMove(int x, int y, long flags) override;
    bool onMouseWheel(int x, int y, int delta, long flags) override;
    bool onMouseLeave() override;
    bool onGetFocus() override;
    bool onLostFocus() override;
    bool onDraw(Painter* painter, const Rect& rect) override;
    void doScroll(long horizontal, long vertical) override;
    bool onVisClientSize() override;
    // What the view says itself, and what its dataset says of rows and cells, is asked for again.
    SlotResult onCharsetChanged(Object* sender) override;

protected:
    std::unique_ptr<Native> makeNative() override;
    void nativeGoes() override;
    std::wstring hintAt(int x, int y) override;
    bool beforeMouse(int x, int y, long flags, bool pressed) override;

private:
    friend class aCClientAreaBroker;
    friend struct Composer;
    friend struct RecordPainter;
    friend class RecordAccessible;
    friend class RecordEditor;

    enum class Drag { None, Edge, Cells, Rows };

    void onDataSetChanged() override;
    void onRowChanged(long row) override;
    void onDataSetDestroyed() override;
    void onRowFollowed(long row) override;
    aCRecordView* recordView() override { return this; }

    // Which parts of a column a fit measures.
    struct FitParts {
        bool header = true;
        bool cells = true;
        int maxChars = 0; // 0: all
    };

    void measureFont();
    void initWidths();
    void fitColumns(short mode, short maxChars);
    int contentWidth(int col, const FitParts& parts);
    int cellWidth(int col, int maxChars);
    int fittedWidth(int col, int content) const;
    // Takes over what has changed in columns and row count; true when something has.
    bool syncLayout();
    void updateBars();
    void placeBars();
    void keepSelection(bool toStart);
    bool fetchRow(long row);
    long lastFirstRow() const;
    int64_t columnX(int col) const;
    Rect cellsArea() const;
    void tellFocus(); // to assistive technology
    void afterFocus(int oldCol, long oldRow, bool repaintAll);
    void repaintRow(long row);
    // Its values, or what is said of it, may be others.
    void showRowAnew(long row);
    bool moveKey(VirtualKey key);
    bool tabKey(bool back);
    bool moveFocus(int col, long row, bool extend);
    void pressCell(int x, int y, bool extend);
    void dragTo(int x, int y);
    SlotResult dragTick(Object* sender);
    SlotResult layoutTick(Object* sender);
    void endDrag();
    std::wstring cellHint(int col, long row);

    aCDataSet* m_dataSet = nullptr;
    std::unique_ptr<aCClientAreaBroker> m_broker;
    std::unique_ptr<RecordEditor> m_editor; // never null
    std::shared_ptr<RecordFaces> m_faces;   // fonts measured for painting
    ColumnLayout m_columns;
    RecordSelection m_selection;
    WTimer m_dragTimer;                // scrolls while a drag is held outside
    WTimer m_layoutTimer;              // scroll bars are not changed while painting
    std::map<long, aCString> m_faults; // rows that could not be fetched
    std::vector<Picture> m_headerImages;
    std::vector<Picture> m_cellImages;
    long m_rows = 0;
    long m_firstRow = 1;
    int m_charWidth = 8;
    int m_fontHeight = 16;
    short m_alignMode = aCClientAreaBroker::AlignAll;
    short m_alignChars = 100;
    int m_pictureLimit = 32;
    Drag m_drag = Drag::None;
    int m_dragCol = 0;
    int m_dragStart = 0; // where the edge was pressed, less the width then
    Point m_dragPoint;
    int m_wheelRest = 0;
    bool m_overEdge = false;
    bool m_listBox = false;
    bool m_rowHeaders = true;
    bool m_wideMargin = false;
    bool m_wideRowHeader = false;
    bool m_suppressHeader = false;
    bool m_placingBars = false;
    bool m_barsStale = false;
};

} // namespace OviAPI

OVIAPI_SIGNAL(OviAPI::aCRecordView, onRowGetFocus);
OVIAPI_SIGNAL(OviAPI::aCRecordView, onCellGetFocus);
OVIAPI_SIGNAL(OviAPI::aCRecordView, onHeaderLButtonDown);
OVIAPI_SIGNAL(OviAPI::aCRecordView, onHeaderRButtonDown);
OVIAPI_SIGNAL(OviAPI::aCRecordView, onCellDblClk);
OVIAPI_SIGNAL(OviAPI::aCRecordView, onColResized);
OVIAPI_SIGNAL(OviAPI::aCRecordView, onSelectionChanged);
OVIAPI_SIGNAL(OviAPI::aCRecordView, onDeleteRowKey);
OVIAPI_SIGNAL(OviAPI::aCRecordView, onEditRefused);
OVIAPI_SIGNAL(OviAPI::aCRecordView, onEditStored);
OVIAPI_SIGNAL(OviAPI::aCRecordView, onEditEnded);
OVIAPI_SIGNAL(OviAPI::aCRecordView, onRowBegun);
OVIAPI_SIGNAL(OviAPI::aCRecordView, onOpenValue);
