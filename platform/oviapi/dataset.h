// A table as record views and charts see it: columns, rows by number, and one current row.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <oviapi/column.h>
#include <oviapi/datafailure.h>
#include <oviapi/errorholder.h>
#include <oviapi/export.h>
#include <oviapi/object.h>
#include <oviapi/rowrecord.h>

namespace OviAPI {

class aCRecordView;

enum FetchDirection : short {
    FetchFirst = 1,
    FetchLast = 2,
    FetchNext = 3,
    FetchPrevious = 4,
    FetchAbsolute = 5,
};

// Form of the buffers that AllocData gives.
enum DataForm : short { ValueForm = 0, TextForm = 1 };

// What can be said of a single row or cell beyond its values. A dataset that has nothing to say
// keeps none of these.
struct aCRow {
    aCString caption; // in the row header, instead of the row's number
    Picture picture;  // in the row header
};
struct aCCell {
    Picture picture; // instead of the text
};

// Something that shows a dataset. It is told what happened and never owns the dataset; it takes
// itself out (RemoveViewer) when it dies first.
class OVIAPI_API aCDataSetViewer {
public:
    virtual ~aCDataSetViewer();
    // Rows, columns or values have changed: ask again.
    virtual void onDataSetChanged() = 0;
    // Values of one row have changed, and nothing else. As onDataSetChanged where it is not
    // overridden.
    virtual void onRowChanged(long row);
    // The dataset is about to die: let go of it.
    virtual void onDataSetDestroyed() = 0;
    // The dataset has been moved to a row on purpose.
    virtual void onRowFollowed(long row) { static_cast<void>(row); }
    // The record view behind this viewer, null for others.
    virtual aCRecordView* recordView() { return nullptr; }
};

// Row and column numbers start at 1. Row numbers have 64 bits; nothing here grows with the number
// of rows. All work is done on the current row: SetRow makes a row current, and the values, stamps
// and reasons of columns are those of the current row until another one is fetched.
//
// A row that comes from a source lies in a buffer: the columns one after the other, each rowBytes()
// long, without padding (text as wchar_t). Data that is handed over (IntoCol, AddRow) is such bytes
// followed by what they do not tell, a length and a stamp for each column; AllocData and
// AllocRowData make it, the functions on data read it.
//
// A derived dataset over a source overrides GetRowCount, ToRow, GetRowData, the four Column...
// functions, and for editing IntoCol, AddRow and DeleteRow.
//
// Owns its columns, row definitions and the new row. Throws aCDataFailure for a number outside.
// User-interface thread only.
class OVIAPI_API aCDataSet : public Object, public aCErrorHolder {
public:
    aCDataSet();
    ~aCDataSet() override;

    // --- columns

    int GetColCount() const { return static_cast<int>(m_columns.size()); }
    // Null outside 1..GetColCount().
    aCColumn* GetColInfo(int column) const;
    // Takes the column over. position: number it gets, 0 for the end. Returns its number.
    int AddColDef(aCColumn* column, int position = 0);
    void DeleteColDef(int column);
    void DeleteAllColDef();
    // To be called after the sizes of columns have changed.
    void CountColumns();
    // Where a column lies in the row buffer, in bytes; the length of the whole row.
    size_t GetColOffset(int column) const;
    size_t GetRowLength() const { return m_offsets.back(); }

    // --- rows

    // Rows, the new one included.
    virtual long GetRowCount();
    // Makes a row current. Returns 0, or 1 when it could not be fetched: then its error is in the
    // error holder and no row is current. Throws only when errors are to be raised.
    short SetRow(long row);
    // The current row, 0 for none.
    long GetRow() const { return m_currentRow; }
    // Moves the source and fills the row buffer. direction: FetchDirection; row counts for
    // FetchAbsolute only. Returns 0, or 1 for an error that has been recorded. A derived class
    // calls SetCurrentRow when it is done; below SetRow it need not. follow: as for MoveToRow,
    // which sees to it. Here there is no source: 1.
    virtual short ToRow(short direction, long row, bool follow);
    // ToRow for applications: with follow the views that show the dataset move their focus to the
    // row, unless following has been switched off.
    short MoveToRow(short direction, long row, bool follow);
    // Makes a row current that is read anew from its source, whatever was kept of it. Returns 0,
    // and the row's error is gone; or 1 with the row's error.
    virtual short RefreshRow(long row);
    bool FollowsRow() const { return m_followRow; }
    void SetFollowsRow(bool follow) { m_followRow = follow; }
    // The row buffer. Here: a copy of the current row made on demand; null without one.
    virtual const void* GetRowData();

    // What is known of a row, null for nothing.
    virtual aCRow* GetRowInfo(long row);
    virtual aCCell* GetCellInfo(int column, long row);
    // The definition of a row, made on demand.
    aCRow& AddRowDef(long row);
    // Takes a row's definition out; the definitions behind it move up.
    void DeleteRowDef(long row);
    void DeleteAllRowDef();

    // --- values of the current row

    bool IsNull(int column);
    // Bits of CellStamp.
    unsigned CellState(int column);
    // Why the cell is cut or invalid, a sentence for the user; empty for nothing.
    aCString CellReason(int column);
    // The value's bytes, as long as the value (text without its terminator).
    std::span<const std::byte> CellBytes(int column);
    // Display text, maxChars characters at most. Empty for NULL and DEFAULT, see GetStamp.
    aCString CellText(int column, size_t maxChars = SIZE_MAX);

    // --- values of any row: these make it current

    // Copies at most size - 1 characters and a terminator; returns the number of characters. A row
    // that cannot be fetched, NULL and DEFAULT give an empty text.
    size_t GetCellText(int column, long row, wchar_t* text, size_t size);
    aCString GetCellText(int column, long row);
    // state, where given: 0 a number, 1 none (NULL, not a number, row not fetched; the answer is
    // 0).
    virtual double GetCellNumber(int column, long row, short* state = nullptr);
    // The value's bytes; null when the row cannot be fetched.
    const void* GetCellData(int column, long row);

    // --- data that is handed over

    // An empty buffer for one value: ValueForm: data of the column, NULL; TextForm: wchar_t text
    // with room for the display size and a terminator. size, where given: bytes or characters.
    std::unique_ptr<std::byte[]> AllocData(int column, size_t* size, short form) const;
    // Writes the display text of data and a terminator; returns the number of characters.
    size_t DataToText(int column, const void* data, wchar_t* text, size_t size) const;
    aCString DataToText(int column, const void* data) const;
    TextFault TextToData(int column, std::wstring_view text, void* data) const;
    // A copy of the current row's cell as data.
    std::unique_ptr<std::byte[]> CopyData(int column);
    bool IsDataNull(int column, const void* data) const;
    // Left to the server's default.
    bool IsDataEmpty(int column, const void* data) const;
    unsigned GetDataStamp(int column, const void* data) const;
    // A stamp of NULL or DEFAULT takes the value away.
    void SetDataStamp(int column, void* data, unsigned stamp) const;
    std::span<const std::byte> GetDataBytes(int column, const void* data) const;
    // False when the value is longer than the column; then data is NULL.
    bool SetDataBytes(int column, void* data, std::span<const std::byte> value) const;

    // The same for a whole row: columns as in the row buffer, then length and stamp of each.
    // Every cell is StampUntouched at first.
    std::unique_ptr<std::byte[]> AllocRowData() const;
    std::unique_ptr<std::byte[]> ColDataOfRow(int column, const void* rowData) const;
    void ColDataIntoRow(int column, const void* data, void* rowData) const;

    // --- editing

    // The data of a cell of the current row has been changed by the user. Returns 0 when it is
    // stored, else 1 with the reason in the error holder. Here: into the row held in memory.
    virtual short IntoCol(int column, void* data);
    // Stores a new row before a position, 0 for the end. Without data: begins the new row, which
    // then stands behind the last one until it is posted or deleted. Returns 0 or 1 as IntoCol.
    virtual short AddRow(void* data, long position);
    // Returns 0 or 1 as IntoCol; a row that does not exist is left alone.
    virtual short DeleteRow(long row);
    virtual short DeleteAllRow();
    virtual bool IsUpdatable(int column);
    // Why a cell of the current row cannot be edited, a sentence for the user; empty when it can.
    virtual aCString ReadOnlyReason(int column);

    // Puts the source itself on the row (a cached row does not) and stores the data: the way a view
    // edits. Nothing is stored when the source gives other values, in whatever column, than those
    // that are kept as shown, by BeginEdit or in the row cache: then the row's error is that
    // another session has changed it, the result is 1, and RefreshRow shows what there is. Cells of
    // the new row are kept until it is posted.
    short StoreCell(int column, long row, void* data);
    // The same from text. reason, where given: a sentence when the result is 1.
    short StoreText(int column, long row, std::wstring_view text, aCString* reason = nullptr);

    // Keeps the row as it is shown now, for as long as somebody changes a value of it: StoreCell
    // and a deletion compare with it. One row at a time; a cell that was stored is kept as stored.
    void BeginEdit(long row);
    void EndEdit();
    // The row of BeginEdit, 0 for none.
    long GetEditedRow() const { return m_editedRow; }

    // The new row: begun by AddRow without data, not yet stored.
    bool HasVirtualRow() const { return m_virtualRow != nullptr; }
    // Its number, 0 without one.
    long GetVirtualRow();
    bool IsVirtualRow(long row) { return row != 0 && row == GetVirtualRow(); }
    void DeleteVirtualRow();
    // Hands the new row to AddRow; it is gone when that returns 0. Else the error is that of row 0
    // and the new row stays.
    short PostVirtualRow();

    // --- stamps: what a view shows in the place of a value

    // kind: one bit of CellStamp.
    void SetStamp(unsigned kind, const wchar_t* text);
    const aCString& GetStamp(unsigned kind) const;

    // --- row cache: rows once fetched are kept, up to 16 MiB. Off at first.

    void SetRowCache(bool on);
    bool IsRowCacheOn() const { return m_cacheOn; }
    bool IsRowCached(long row) const { return m_cache.contains(row); }
    // Copies the current row into the cache, over what was there.
    void CacheCurrentRow();
    void ClearRowCache();

    // --- views

    void AddViewer(aCDataSetViewer* viewer);
    void RemoveViewer(aCDataSetViewer* viewer);
    // Tells every viewer that rows or values have changed; the current row is fetched again when it
    // is next asked for.
    void RefreshViews();
    // The same when values of one row alone have changed.
    void RefreshRowInViews(long row);
    // The record view that shows this dataset, the first when there are several; null without.
    aCRecordView* GetRecordView() const;

protected:
    // ToRow to a row by its number, for RefreshRow: what the source itself keeps is read again.
    virtual short ToRowAnew(long row);
    // What becomes of a change of a row that is no longer as it was shown: the answer of StoreCell.
    // Here: 1 with the error of the row.
    virtual short RefuseStaleRow(long row);
    // Puts the source itself on a row for a change of it. Returns 0; or 1, with the row's error,
    // when it cannot be read, or is not what is kept as shown.
    short PutSourceOnRow(long row);
    // Whether the values of the current row are kept in memory, so that the source need not stand
    // on it.
    bool IsCurrentRowKept() const { return m_record != nullptr; }
    // Of the row in the row buffer, asked only while it is current and neither cached nor new.
    virtual bool IsColumnNull(int column);
    virtual unsigned ColumnState(int column); // StampCut, StampInvalid
    virtual aCString ColumnReason(int column);
    // For a value whose type is not the column's (StampInvalid), of which the row buffer holds
    // nothing: its text. False when the bytes in the buffer are to be shown.
    virtual bool ColumnText(int column, aCString& text);
    // Bytes of a value of type Bytes; -1 for the whole space of the column.
    virtual long ColumnDataLen(int column);

    // For ToRow of datasets that hold their rows as records: the current row is this one. The
    // record stays where it is until the next call.
    void UseRecord(RowRecord* record) { m_record = record; }
    // After a column has been added, is about to go: for datasets that hold rows themselves.
    virtual void ColumnAdded(int column);
    virtual void ColumnDeleted(int column);
    // The row that is in the row buffer now, 0 for none.
    void SetCurrentRow(long row);
    // The new row as data of a row; null without one.
    std::unique_ptr<std::byte[]> VirtualRowData() const;
    // One cell of data as a cell of a record.
    RowRecord::Cell CellOfData(int column, const void* data) const;

    long m_rowCount = 0; // rows of the source, without the new one
    long m_currentRow = 0;

private:
    struct CachedRow {
        RowRecord record;
        std::list<long>::iterator used; // place in m_cacheUse
    };
    struct Trailer;

    aCColumn& col(int column) const;
    RowRecord recordOfCurrent();
    bool isAsShown(long row);
    std::span<const std::byte> bufferBytes(int column);
    bool otherText(int column, aCString& text);
    void trimCache();
    void dropCached(long row);
    void dropOldPhrases();
    template<class Tell>
    void tellViewers(Tell tell);

    std::vector<std::unique_ptr<aCColumn>> m_columns;
    std::vector<size_t> m_offsets{0}; // of each column, and the end
    std::map<long, aCRow> m_rowDefs;
    std::unique_ptr<RowRecord> m_virtualRow;
    RowRecord* m_record = nullptr; // the current row, when it does not lie in the row buffer
    RowRecord m_shown;             // the row of BeginEdit
    long m_editedRow = 0;
    std::vector<std::byte> m_unpacked;
    std::map<long, CachedRow> m_cache;
    std::list<long> m_cacheUse; // cached rows, the one used last in front
    size_t m_cacheBytes = 0;
    unsigned long m_cacheEdition; // of the phrases that cached reasons are made of
    bool m_cacheOn = false;
    bool m_stale = false; // the current row is to be fetched again when it is asked for
    bool m_followRow = true;
    bool m_rowTold = false; // SetCurrentRow has been called
    std::map<unsigned, aCString> m_stamps;
    std::vector<aCDataSetViewer*> m_viewers;
};

} // namespace OviAPI
