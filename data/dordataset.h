// The answer of a database query as a dataset.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <dorcpp/connect.h>
#include <dorcpp/cursor.h>
#include <dorcpp/paramdesc.h>
#include <dorcpp/statement.h>
#include <oviapi/dataset.h>
#include <oviapi/phrases.h>

#include "app/export.h"
#include "data/writesql.h"

// Shows the rows of a cursor and writes back what is changed in them: describes the columns,
// fetches one row at a time as views ask for it, makes SQL of edits, and keeps every database error
// as the error of its row. Nothing is held but the current row, so that an answer of any length
// takes the same memory.
//
// Writing: an edit changes exactly one row or nothing. Cell and row are those that the cursor has
// read; what another session has changed or deleted since is an error of the row. A value that is
// cut or not valid is never written, nor is one that its text in SQL would not say exactly.
//
// Row and column numbers start at 1. Errors of the database: an operation that says nothing else
// records them (ErrorHandler) and returns; it throws them as DorX when errors are to be raised
// (SetRaiseErrors). A row that could not be read keeps its error until it can be read.
//
// Owns the cursor when it was handed over with ownership, and a connection object of its own;
// statement and bind map are borrowed and must stay while they are in use. Throws aCDataFailure
// for a number outside. User-interface thread only.
class OVIEXT_API xCDorvexDataSet : public OviAPI::aCDataSet {
public:
    xCDorvexDataSet();
    ~xCDorvexDataSet() override;

    // --- opening; with autoColumns the columns are made by AutoCreateColumns

    // Executes the text on a new cursor. channel: of an open session. mode: of the cursor.
    virtual void Open(int channel, const wchar_t* sql, int mode, bool autoColumns);
    // Shows the answer of the caller's cursor, which has executed the text and stays the caller's.
    void OpenUsingCursor(int channel, const wchar_t* sql, DorCPP::DorCursor* cursor,
                         bool autoColumns);
    // The same for a statement with parameters.
    void OpenUsingStatement(int channel, DorCPP::DorCursor* cursor, DorCPP::DorStatement* statement,
                            DorCPP::BindMap* binds, bool autoColumns);
    // Shows the answer of an existing cursor, for reading only. keep: for the owner's use.
    void OpenByCursor(int channel, int cursorHandle, bool keep);
    // Executes the text (null: the one in use) on a new cursor, which then replaces the present
    // one. Never throws DorX: when the statement fails the present cursor stays, and the result is
    // 1, or 0 when errors are to be raised, as after success.
    short ReOpen(const wchar_t* sql);
    // Executes the query again on the present cursor; for after the data have changed. tellViews:
    // whether the views are told. Never throws DorX.
    void ResetDataSet(bool tellViews);

    // Replaces the cursor and describes it; null leaves the dataset without one. The one before is
    // closed and destroyed when it was owned. Throws DorX, and is left without a cursor then.
    void SetDBCursor(DorCPP::DorCursor* cursor, bool owns);
    // False when there was none. A cursor of the caller's is only let go of.
    bool DestroyDBCursor();
    // Null without one.
    DorCPP::DorCursor* GetDBCursor() const { return m_cursor; }
    // The second cursor of the connection, made on first use. Throws DorX.
    DorCPP::DorCursor* GetDBInsCursor();

    // Makes a column for every column of the answer, named after it. Throws aCDataFailure
    // (NoCursor).
    void AutoCreateColumns();
    // What AutoCreateColumns makes: xCColumn, else xCOrderByColumn, else aCColumn.
    void SetCreatesExtendedColumns(bool on) { m_createExtended = on; }
    void SetCreatesOrderByColumns(bool on) { m_createOrderBy = on; }
    // Whether GetCellNumber leaves decimals to the database client.
    void SetDecimalNumbers(bool on) { m_decimalNumbers = on; }

    // Whether changes are written back: false after OpenByCursor, true after Open, ReOpen and
    // OpenUsingCursor.
    bool WritesBack() const { return m_writeBack; }
    // The last argument of OpenByCursor.
    bool IsOpenByCursor() const { return m_openByCursor; }

    // --- rows

    // Rows of the answer, and the new one while there is one.
    long GetRowCount() override;
    // Fetches a row into the row buffer. Never throws DorX: the result is 1 for an error that has
    // been recorded, and 0 when it was to be raised; the error kind then tells.
    short ToRow(short direction, long row, bool follow) override;
    // A framework direction as one of the database client; 0, which it refuses, for any other.
    static int ConvertDirection(short direction);
    // The row buffer, every column at the sum of the sizes before it; null without a cursor.
    const void* GetRowData() override;
    // Bytes of a row of the cursor.
    virtual int64_t GetRowBufferLength(DorCPP::DorCursor* cursor);
    // Bytes that a column of this database type and declared length (bytes) takes in the buffer.
    static long GetDataLenFromType(unsigned char type, long length);

    double GetCellNumber(int column, long row, short* state = nullptr) override;

    // --- editing

    // The new row's cells are kept until it is posted. While changes are not written back, the
    // first three do nothing and answer 0.
    short IntoCol(int column, void* data) override;
    // position does not count: where the row comes to stand is the query's order.
    short AddRow(void* data, long position) override;
    short DeleteRow(long row) override;
    // Deletes all rows of the table, also those that the query does not show.
    short DeleteAllRow() override;
    // Whether the cells of a column can be changed here at all; a cell may still have a reason.
    bool IsUpdatable(int column) override;
    OviAPI::aCString ReadOnlyReason(int column) override;
    // Makes the text of a value one of SQL: between quotes where the column's type wants it.
    void GetColSQLText(int column, OviAPI::aCString& text) const;

    // --- large objects of the current row

    // Of the row in the row buffer; IsNull also knows cached rows and the new one.
    bool IsColumnNull(int column) override;
    // The database type code of the value; of the new row, what has been set in the column.
    int GetBlobType(int column);
    // Bytes of the whole value; of the new row, what has been set in the column.
    int64_t GetBlobSize(int column);
    int64_t GetFisicalBlobSize(int column);
    // Reads a piece of the value. offset: bytes from its start. Returns the bytes read, less than
    // size at the end of the value, and 0 for an error, which the error kind tells.
    size_t GetBlob(int column, int64_t offset, void* buffer, size_t size);
    // Replace the value: ClearBlob begins with an empty one, AppendBlob adds to it (to the value
    // there is without ClearBlob). The value is written once, by WriteBlob or when the dataset goes
    // on to something else; an error is that of the row. Return 0 or 1.
    short ClearBlob(int column);
    short AppendBlob(int column, const void* data, size_t size);
    short WriteBlob();

    // --- errors

    // What the error happened in.
    enum Operation : int { Fetching = 0, Modifying = 1 };

    // Records an error of a row (0: of the whole dataset) and its kind. Returns true when the
    // caller is to go on quietly, false when it is to throw the error.
    virtual bool ErrorHandler(int operation, const DorCPP::DorX& x, long row);
    // Whether an error means that the session, the server or the file cannot be used any longer.
    static bool IsCriticalError(long code, long systemCode);
    void GetLastErrorText(OviAPI::aCString& text) const { text = m_lastError; }

protected:
    // The stored query, executed on a new cursor of the stored connection and mode. Throws DorX.
    virtual std::unique_ptr<DorCPP::DorCursor> executedCursor();
    // Executes a statement that an edit has been made into; all of them come here.
    virtual void ExecuteChange(DorCPP::DorCursor& cursor, const std::wstring& sql);
    short ToRowAnew(long row) override;
    short RefuseStaleRow(long row) override;

    // Fill the descriptors and the row count from the cursor.
    void buildColDesc();
    void buildRowCount();
    // Descriptor of a column; number 0 is an empty one. Throws aCDataFailure.
    const t_ParamDesc& columnDesc(int column) const;

    unsigned ColumnState(int column) override;
    OviAPI::aCString ColumnReason(int column) override;
    bool ColumnText(int column, OviAPI::aCString& text) override;
    long ColumnDataLen(int column) override;

    struct Free {
        void operator()(std::byte* bytes) const { free(bytes); }
    };

    bool m_openByCursor = false;
    std::string m_query; // multibyte text of the process locale
    int m_channel = 0;
    bool m_writeBack = true;
    bool m_openedByStatement = false;
    bool m_createExtended = false;
    bool m_decimalNumbers = false;
    bool m_createOrderBy = false;
    bool m_ownsCursor = false;
    DorCPP::DorCursor* m_cursor = nullptr;
    std::unique_ptr<DorCPP::DorCursor> m_insertCursor;
    OviAPI::aCString m_lastError;
    std::unique_ptr<std::byte[], Free> m_rowBuffer; // from calloc
    int m_rowBufferSize = 0;                        // bytes
    DorCPP::DorConnect m_connection;
    int m_cursorMode = 0;
    int64_t m_answerRows = -1;              // -1: not asked yet
    int64_t m_rowLength = -1;               // bytes; -1: not computed yet
    int m_described = -1;                   // descriptors held; -1: none
    std::vector<t_ParamDesc> m_descriptors; // by column number, an empty one in front
    DorCPP::DorStatement* m_statement = nullptr;
    DorCPP::BindMap* m_binds = nullptr;

private:
    // Where and how the values of a column get into the row buffer.
    struct Slot {
        enum Way : unsigned char { Skipped, Text, NationalText, Bytes, OwnForm };

        int64_t offset = 0; // bytes
        long size = 0;      // bytes
        Way way = Skipped;
        unsigned char type = 0; // of the database
        uint16_t length = 0;    // declared, bytes
        size_t used = 0;        // bytes from the start that are not zero
        size_t valueLength = 0; // bytes of the value that lies there
        DorCPP::ValueState state = DorCPP::ValueState::Null;
        OviAPI::aCString stored; // the value, when it is not of the column's type
    };

    // Whether rows of the cursor can be changed.
    enum class Access { Writable, ConnectionReads, CursorReads, NotKeyed };

    void executeAgain();
    void releaseCursor();
    void describe();
    Access accessOf() const;
    std::unique_ptr<OviAPI::aCColumn> newColumn() const;

    void layOut();
    void makeRoom(int64_t length);
    void clearRow();
    void readRow();
    void readText(int column, Slot& slot);
    void readNationalText(int column, Slot& slot);
    void readBinary(int column, Slot& slot, int clientType);
    template<class Fetch>
    short readInto(long row, Fetch fetch);
    const Slot* slotOf(int column) const;
    bool standOnCurrentRow();
    OviAPI::aCString storedText(int column);

    TableColumnName nameOf(int column) const;
    TableColumnName tableName() const;
    std::optional<OviAPI::Phrase> whyReadOnly(int column) const;
    OviAPI::aCString sqlValue(int column, const void* data, bool forInsert) const;
    std::wstring insertTextOf(const void* rowData) const;
    bool standForChange(long row);
    void rowIsStored(long row);
    void settleBlob();
    template<class Change>
    short changeBlob(int column, Change change);

    void errorIsOver(long row);
    void forgetRowErrors();

    std::vector<Slot> m_slots; // by column number - 1
    std::unique_ptr<char[]> m_scratch;
    std::set<long> m_unread; // rows whose error comes from reading; the last ones only
    DorCPP::DorX m_unraised; // the latest error of reading, for those who throw it
    Access m_access = Access::NotKeyed;
    long m_blobRow = 0; // row and column of a large object that is being replaced, 0 for none
    int m_blobColumn = 0;
};
