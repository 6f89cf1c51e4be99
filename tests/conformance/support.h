// What the conformance tests share: a database of the test's own on either engine.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <dorcpp/cursor.h>

#include "../platform/dorcpp/support.h"

namespace Conformance {

using namespace DorCPP;
using DorTest::codeOf;
using DorTest::messageOf;
using DorTest::rows;
using DorTest::text;

enum class Engine { Sqlite, Postgresql };

inline std::string nameOf(const ::testing::TestParamInfo<Engine>& info)
{
    return info.param == Engine::Sqlite ? "Sqlite" : "Postgresql";
}

// Where the test server is; the file is written when it is started. Throws when there is none.
std::map<std::string, std::string> readServer(const std::string& stateFile);
const std::map<std::string, std::string>& server();

// Whether this is the long suite: OVI_STRESS=1.
bool isLong();

// Whether an error has a nested record of this phrase.
bool says(const DorX& x, OviAPI::Phrase phrase);

// A database that the test has for itself: a file, or a schema of the test server.
class Place {
public:
    explicit Place(Engine engine);
    ~Place();
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    Engine engine() const { return m_engine; }
    const std::string& schema() const { return m_schema; }
    // The four strings.
    void open(DorConnect& connection, const char* options = "", int mode = 0) const;
    std::string database() const;

private:
    Engine m_engine;
    DorTest::Folder m_folder;
    std::string m_schema; // "main" of a file
};

// Counts its calls and lets the test wait for them.
class Waiter : public DorCursor::Handler {
public:
    void handler(unsigned short s, int c) override;
    // False after the time.
    bool wait(int count = 1, std::chrono::milliseconds time = std::chrono::seconds(60));
    int status = -1;
    int code = -1;
    int calls = 0;

private:
    std::mutex m_mutex;
    std::condition_variable m_called;
};

// A session with a cursor on a place.
struct Client {
    explicit Client(const Place& place, const char* options = "", int mode = 0)
    {
        place.open(connection, options, mode);
        cursor.create(connection, 0, nullptr, true);
    }
    void execute(const std::string& sql) { cursor.execute(sql.c_str()); }
    // The first value of an answer, as text.
    std::string value(const std::string& sql);
    std::vector<std::string> answer(const std::string& sql)
    {
        execute(sql);
        return rows(cursor);
    }

    DorConnect connection;
    DorCursor cursor;
};

class OnEngine : public ::testing::TestWithParam<Engine> {
protected:
    OnEngine()
        : place(GetParam())
        , own(place)
        , connection(own.connection)
        , cursor(own.cursor)
    {
    }
    bool isServer() const { return GetParam() == Engine::Postgresql; }
    void execute(const std::string& sql) { own.execute(sql); }
    // Executes on another cursor, so that the answer of the first stays.
    void change(const std::string& sql)
    {
        DorCursor other;
        other.create(connection, 0, nullptr, false);
        other.execute(sql.c_str());
    }
    // A type or literal of bytes.
    std::string bytesType() const { return isServer() ? "bytea" : "BLOB"; }
    std::string bytes(const std::string& hex) const
    {
        return isServer() ? "'\\x" + hex + "'::bytea" : "x'" + hex + '\'';
    }
    // A table n(id, s) with that many rows.
    void fill(int count);
    // A statement that runs for longer than any test.
    static std::string endless();

    Place place;
    Client own;
    DorConnect& connection;
    DorCursor& cursor;
};

class OnPostgresql : public ::testing::Test {
protected:
    OnPostgresql()
        : place(Engine::Postgresql)
        , own(place)
        , connection(own.connection)
        , cursor(own.cursor)
    {
    }
    void execute(const std::string& sql) { own.execute(sql); }
    void change(const std::string& sql)
    {
        DorCursor other;
        other.create(connection, 0, nullptr, false);
        other.execute(sql.c_str());
    }

    Place place;
    Client own;
    DorConnect& connection;
    DorCursor& cursor;
};

// Milliseconds since the object was made.
class Stopwatch {
public:
    long ms() const
    {
        return static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                     std::chrono::steady_clock::now() - m_start)
                                     .count());
    }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

} // namespace Conformance

#define ON_BOTH_ENGINES(suite)                                                                     \
    INSTANTIATE_TEST_SUITE_P(                                                                      \
        On, suite,                                                                                 \
        ::testing::Values(Conformance::Engine::Sqlite, Conformance::Engine::Postgresql),           \
        Conformance::nameOf)
