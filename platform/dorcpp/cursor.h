// Cursors: executing statements and reading their answers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include <dorcpp/connect.h>
#include <dorcpp/paramdesc.h>
#include <dorcpp/statement.h>
#include <oviapi/export.h>

namespace DorCPP {

struct CursorState;

// Executes one statement at a time and reads its answer in any direction. Rows and columns are
// numbered from 1.
//
// A SELECT of one table is read by row keys: the rows are found once, and each is read when it is
// fetched, so changes made meanwhile are seen and a row that was deleted meanwhile is missing
// (CodeRowGone, the cursor stays usable). Every other answer is copied to a temporary file when the
// statement is executed. Between two calls a cursor holds no lock and no transaction.
//
// "UPDATE t SET .. WHERE CURRENT OF CURSOR" and "DELETE FROM t WHERE CURRENT OF CURSOR" change the
// row at the position, and only as long as it is what the fetch has read; answer and position stay.
// A fetched row never changes by itself: it is read anew by a fetch (rows are read in blocks, and a
// block again after the session has changed rows by any other statement) and by the cursor's own
// change, which leaves the other rows as they were read. After a DELETE the row is missing, also
// when the transaction is rolled back: then execute again.
//
// INSERT, UPDATE and DELETE may hold what the engines do not know: Hex('..'), EXTFILE('..'),
// DEFAULT as a value, dates as 'mm/dd/yyyy:hh:mi:ss.ff'. Every other text reaches the engine byte
// for byte.
//
// A cursor belongs to one thread. All calls throw DorX; CodeBusy while a statement runs
// asynchronously on the cursor, except from close, isRunning, isInCallback and the destructor.
class OVIAPI_API DorCursor {
public:
    // Is told the end of an asynchronous statement, once, on a thread of its own. It must outlive
    // the call. status: 0, or the error's DBMS code (CodeCancelled after close); code: 0, or not.
    // After it has been called the cursor may be used. A statement that still runs when the process
    // ends is cancelled, and its handler called before the objects of the program go.
    class OVIAPI_API Handler {
    public:
        virtual void handler(unsigned short status, int code) = 0;
        virtual ~Handler();
    };

    DorCursor();
    virtual ~DorCursor();
    DorCursor(const DorCursor&) = delete;
    DorCursor& operator=(const DorCursor&) = delete;

    // Makes the cursor on the connection's session. mode: see Mode. name: for messages, may be
    // null. probe: asks the engine first whether the session still answers.
    void create(const DorConnect& connection, int mode, const char* name, bool probe);
    // Shares the cursor with this handle: answer, position and all. takeOver: the cursor is closed
    // when this object goes, otherwise when its first owner does.
    void attach(int handle, bool takeOver);
    bool isCreated() const { return m_state != nullptr; }
    // A number for attach and DORVEX_GetCursorOption, from 1; 0 before create.
    int handle() const;

    // Drops the answer. Of a running statement: returns at once, the statement is cancelled and its
    // handler still called. The cursor can execute again, also where this throws because the last
    // value of clearBlob and appendBlob could not be written. The destructor says nothing of that.
    virtual void close();

    // Executes one statement; an empty text does nothing and keeps no answer. With a handler it
    // returns at once, the statement runs on a connection of its own (on the session's when a
    // transaction is open, the database is in memory, or the session has settings of its own), and
    // the handler gets every error of the statement. Where execute itself throws, as it does when
    // no thread can be made, the handler is never called. A positioned statement runs on the
    // session's connection; it throws CodeBadCall or CodeNoRow where no row was fetched,
    // CodeRowGone where it has gone, CodeNotUpdatable where the cursor only reads, the answer is
    // not read by row keys or the statement names another table, and CodeRowChanged when another
    // session has changed the row. The answer stays in any case.
    void execute(const char* sql, Handler* handler = nullptr);
    // The values are copied. binds may be null.
    void execute(const DorStatement& statement, const BindMap* binds, Handler* handler = nullptr);

    // Whether an asynchronous statement has not called its handler yet.
    bool isRunning() const;
    // Whether the handler of the latest asynchronous statement is being called right now.
    bool isInCallback() const;
    // The error of the latest asynchronous statement, with its texts; the empty record when it had
    // none.
    const DorX& lastError() const;

    // Columns of the answer, 0 when the statement gave none.
    int columnCount() const;
    // Describes column i.
    void answerDesc(int i, t_ParamDesc& desc) const;
    // Rows of the answer; 0 for a statement without one.
    int64_t selectRowCount() const;
    // Rows that the latest INSERT, UPDATE or DELETE changed.
    int64_t changedRowCount() const;
    // Whether the answer is read by row keys, so that a row can be named in a positioned statement.
    bool isKeyed() const;
    // The mode given to create.
    int mode() const;

    // Moves to a row; row counts for FetchAbsolute only. reached, rows: get the row number and the
    // number of rows, may be null. CodeNoRow when there is no such row (moving past an end leaves
    // the position there, a wrong row number leaves it where it was); CodeRowGone when the row has
    // been deleted (the position is on it).
    void fetch(int direction, int64_t row, int64_t* reached = nullptr, int64_t* rows = nullptr);
    // Moves to a row by its number and reads it from the engine, whatever was read of it before.
    // Errors as of fetch. Nothing is new where the answer was copied.
    void fetchAnew(int64_t row);
    // The current row number; 0 before the first fetch.
    int64_t position() const;

    // Gets a value of the current row into a buffer of capacity bytes. clientType: the column's own
    // type, TypeText, TypeNchar (UTF-16) or TypeByte; see types.h for the forms. Text is cut
    // between two characters and always ended. indicator gets 1 for null, else 0; length the bytes
    // stored without the end. Both may be null. CodeBadCall when the buffer is too small for a
    // binary form.
    ValueState getData(int column, int clientType, void* buffer, size_t capacity,
                       short* indicator = nullptr, size_t* length = nullptr);
    // The state of the latest getData of this column in this row; before one, Null or Exact.
    ValueState valueState(int column) const;
    bool isNull(int column) const;

    // Bytes of the whole value, text in UTF-8; 0 for null.
    int64_t getBlobLen(int column);
    // Reads a piece of the whole value of any length. offset: bytes from the start. Returns the
    // bytes read, less than size only at the end.
    size_t getBlob(int column, int64_t offset, void* buffer, size_t size);
    // Replace the value of a column of the current row: clearBlob starts with an empty value,
    // appendBlob adds to it (to the value there is when clearBlob was not called). The new value
    // lies in a temporary file when it is long, and is written once, when the cursor moves,
    // executes, reads that value or is closed. CodeNotUpdatable where the answer is not read by row
    // keys or the column is an expression.
    void clearBlob(int column);
    void appendBlob(int column, const void* data, size_t size);
    // Forgets the new value as far as it was not written yet: the old one stays. What appendBlob
    // could not take is forgotten as well.
    void giveUpBlob();
    // The column's type code for a value that may be read in pieces.
    int blobType(int column) const;

private:
    std::shared_ptr<CursorState> m_state;
    bool m_owner = false;
};

// Options of DORVEX_GetCursorOption.
enum CursorOption : int {
    CursorOptionNull = 214,     // whether the column of the current row is null: 1 or 0
    CursorOptionBlobType = 223, // the column's type code
};

} // namespace DorCPP

// Asks an option of the cursor with this handle; the answer is a 32-bit integer, so size is 4.
// Returns 0, or the DBMS code of the error.
OVIAPI_API int DORVEX_GetCursorOption(int handle, int option, int column, void* value, int size);
