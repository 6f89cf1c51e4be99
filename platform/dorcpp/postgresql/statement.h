// Sending statements to the server and taking its answers.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <dorcpp/driver.h>
#include <dorcpp/postgresql/open.h>
#include <dorcpp/postgresql/types.h>

namespace DorCPP::Postgresql {

struct Clear {
    void operator()(PGresult* result) const { PQclear(result); }
};
using Result = std::unique_ptr<PGresult, Clear>;

// The value of a field, null included. own: where its bytes may lie.
Value valueAt(const PGresult* result, int row, int column, std::string& own);
// The fields of rows that have the same columns. What those of a column share is looked up once.
class Fields {
public:
    explicit Fields(const PGresult* result);
    int columns() const { return static_cast<int>(m_forms.size()); }
    // See valueAt. result: may be another with these columns.
    Value value(const PGresult* result, int row, int column, std::string& own) const;
    // Adds the value as a cell. own: see valueAt.
    template<class Target>
    void add(const PGresult* result, int row, int column, Target& target, std::string& own) const
    {
        const auto length = static_cast<size_t>(PQgetlength(result, row, column));
        if (length == 0 && PQgetisnull(result, row, column)) {
            target.addNull();
            return;
        }
        const Form& form = m_forms[static_cast<size_t>(column)];
        const char* data = PQgetvalue(result, row, column);
        if (!addPlain(form.plain, data, length, target))
            addValue(valueOf({form.type, form.binary, data, length}, own), target);
    }

private:
    struct Form {
        Oid type;
        bool binary;
        PlainForm plain;
    };
    std::vector<Form> m_forms;
};
// Text of a field that is known to be short; empty for null.
std::string textAt(const PGresult* result, int row, int column);

// A statement text as the server reads it: "?" and "?N" have become "$N". A "?" takes the number
// behind the highest one so far; "??" stands for the operator "?", and "?|", "?&" and "@?" are
// operators as they are.
class ServerText {
public:
    explicit ServerText(const std::string& sql);
    const std::string& text() const { return m_text; }
    // The highest parameter number.
    int parameters() const { return m_parameters; }
    // The byte, from 1, of the client's text for a character of this one, from 1.
    int clientByte(int character) const;

private:
    void copy(const std::string& sql, size_t end);

    std::string m_text;
    size_t m_copied = 0; // bytes of the client's text
    int m_parameters = 0;
    struct Shift {
        size_t from; // byte of m_text
        size_t client;
    };
    std::vector<Shift> m_shifts;
};

// Values to send, by parameter number from 1; what is not set is null.
class Values {
public:
    explicit Values(int count = 0)
        : m_own(static_cast<size_t>(count))
        , m_data(m_own.size())
        , m_lengths(m_own.size())
        , m_formats(m_own.size())
    {
    }
    Values(Values&&) = default; // what points into the texts stays true
    Values& operator=(Values&&) = default;
    // type: of the parameter, where it is known. Throws DorX (CodeBadBind) for a number that the
    // statement does not have, and for a text with a zero in it, which the server cannot store.
    void set(int number, const Value& value, Oid type = 0);
    void set(int number, std::string text);
    // The same for a text or blob whose bytes outlive this object: they are not copied, as far as
    // the server takes them as they are.
    void setOutside(int number, const Value& value, Oid type);

    int count() const { return static_cast<int>(m_data.size()); }
    // The texts of the values.
    const std::vector<std::string>& own() const { return m_own; }
    const char* const* data() const { return m_data.data(); }
    const int* lengths() const { return m_lengths.data(); }
    const int* formats() const { return m_formats.data(); }

private:
    std::vector<std::string> m_own;
    std::vector<const char*> m_data;
    std::vector<int> m_lengths;
    std::vector<int> m_formats;
};

// Asks the server to stop what the connection does; each time through a connection and on a thread
// of its own, of which there is one at most.
class Canceller {
public:
    explicit Canceller(PGconn* connection);
    // From any thread; returns at once.
    void start() noexcept;
    // Whether no request is under way any more, within that time. A request that still is goes on
    // by itself and touches nothing of the connection.
    bool waitForEnd(std::chrono::milliseconds time);

private:
    struct Shared;
    std::shared_ptr<Shared> m_shared;
};

// A connection, and the statement under way on it. All waiting for the server is done here. A
// statement whose results were not taken is given up when another is sent.
class Link {
public:
    explicit Link(const Target& target);

    PGconn* get() const { return m_connection.get(); }
    PGTransactionStatusType transaction() const { return PQtransactionStatus(get()); }
    bool isInTransaction() const
    {
        return transaction() == PQTRANS_INTRANS || transaction() == PQTRANS_INERROR;
    }
    bool isLost() const { return PQstatus(get()) == CONNECTION_BAD; }
    // Sees what an idle connection has been told: false when the server ended it.
    bool listen();

    // See Driver. A statement that does not end within two seconds after the flag was set loses the
    // connection, so that a server that stands still holds nobody.
    void watch(const std::atomic<bool>* stop);
    void interrupt() noexcept { m_canceller->start(); }

    // Send a statement; its results are then taken with the functions below.
    void send(const std::string& sql, const Values& values, bool binary);
    void sendPrepared(const std::string& name, const Values& values, bool binary);
    void sendParse(const std::string& name, const std::string& sql);
    void sendDescribe(const std::string& name);
    // The statement's one result; throws its error.
    Result take();
    // Calls the function with each row's result as it comes, and returns the last result, without
    // rows. Nothing of the statement is left when the function throws.
    Result takeRows(const std::function<void(const PGresult*)>& row);
    // The same for the messages of a COPY to the client.
    void takeCopy(const std::function<void(std::string_view)>& message);
    // Whether the latest statement may have reached the server.
    bool wasSent() const { return m_sent; }
    // Where the server saw the fault of the latest statement: character from 1; 0 for unknown.
    int faultAt() const { return m_faultAt; }
    // Counts the statements sent.
    unsigned long serial() const { return m_serial; }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::milliseconds patience{2000};

    void begin();
    void sent(int good);
    void waitForSocket(short events);
    void lookAtStop();
    void giveUp();
    Result next();
    // Takes what is left of the statement, whatever it is; and after a good result, throws its
    // error.
    void drain();
    void finish();
    // Stops the statement and takes what is left of it.
    void abandon();
    void check(Result& result);
    [[noreturn]] void failLost(std::string_view state, std::string_view words);

    LastWords m_words; // goes after the connection
    Connection m_connection;
    std::unique_ptr<Canceller> m_canceller;
    const std::atomic<bool>* m_stop = nullptr;
    std::optional<Clock::time_point> m_stopSeen;
    Clock::time_point m_askAgain;
    bool m_gaveUp = false;
    bool m_sent = false;
    bool m_outstanding = false; // results of the latest statement are to be taken
    int m_faultAt = 0;
    unsigned long m_serial = 0;
};

// A column as a statement's description gives it.
struct DescribedColumn {
    std::string label;
    Oid type;
    int modifier;
    Oid table; // 0: no column of a table
    int number;
};
std::vector<DescribedColumn> describedColumns(const PGresult* result);
// Whether every value of the columns can be read in its binary form.
bool areBinary(const std::vector<DescribedColumn>& columns);

// A statement that the server keeps.
struct Prepared {
    Prepared(std::string itsName, const std::string& sql)
        : name(std::move(itsName))
        , text(sql)
    {
    }
    std::string name;
    ServerText text;
    std::vector<Oid> parameterTypes;
    std::vector<DescribedColumn> columns; // empty: gives no rows
    bool binary = false;

    // Room for the values of all parameters, with these in it.
    Values values(const Parameters& parameters = {}) const;
};

// Statements kept by their text, the latest used ones.
class StatementCache {
public:
    // Prepares and describes the one statement of the text where it is not kept. Throws DorX, also
    // for several statements. The statement stays until another is asked for.
    const Prepared& get(Link& link, const std::string& sql);
    bool holds(const std::string& sql) const { return m_bySql.count(sql) != 0; }
    // Drops the statements, which may be outdated. keptByServer: the server still has them.
    void clear(bool keptByServer);

private:
    static constexpr size_t maxCount = 48;
    struct Entry {
        std::string sql;
        Prepared statement;
    };
    void dropUnused(Link& link);

    unsigned m_last = 0;
    std::list<Entry> m_entries; // latest used first
    std::unordered_map<std::string_view, std::list<Entry>::iterator> m_bySql;
    std::vector<std::string> m_unused; // names that the server still keeps
};

// Refuses a text with a zero in it.
void checkText(const std::string& sql);

} // namespace DorCPP::Postgresql
