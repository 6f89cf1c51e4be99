// An engine without the client, as the floor of client_bench: what a program would write that calls
// the engine's own functions.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

class RawEngine {
public:
    virtual ~RawEngine() = default;

    // Makes the table "item" of 8 mixed columns, with a primary key and no other index.
    virtual void makeTable(int64_t rows) = 0;
    // Runs the statement and copies every cell out; returns a checksum.
    virtual uint64_t readAll(const std::string& sql) = 0;
    // Sets the column qty of the rows 1 to count, one by one by key, with a prepared statement,
    // each time to another value: an engine may save the writing of the same.
    virtual void updateByKey(int64_t count) = 0;
    // Inserts rows with ids from first on, one by one with a prepared statement.
    virtual void insertRows(int64_t first, int64_t count) = 0;
    virtual void execute(const std::string& sql) = 0;

    // The owner of the table, and what the client and the peer open.
    virtual const char* owner() const = 0;
    virtual std::string database() const = 0;
    virtual std::string peerArguments() const = 0;

protected:
    int64_t m_updates = 0;
};

// In a file of this path.
std::unique_ptr<RawEngine> rawSqlite(const std::string& path);
// On a server, named by "keyword=value" pairs.
std::unique_ptr<RawEngine> rawPostgresql(const std::string& server);
