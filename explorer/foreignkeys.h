// How the tables of a database refer to each other.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <oviapi/timer.h>

#include "explorer/backgroundstatement.h"
#include "explorer/databasesession.h"

// Rows of the detail table refer to a row of the master table, which may be the same table.
struct ForeignKey {
    struct Pair {
        std::wstring detail; // column that refers
        std::wstring master; // column that is referred to
        bool operator==(const Pair&) const = default;
    };

    std::wstring name; // tells apart the keys of one detail table
    DatabaseTable detail;
    DatabaseTable master;
    std::vector<Pair> columns; // in the order of the key, never empty

    bool operator==(const ForeignKey&) const = default;
};

// A table whose rows belong to a row of another one.
struct DetailTable {
    ForeignKey key;
    std::wstring caption; // for the user; each detail of a table has another one

    bool operator==(const DetailTable&) const = default;
};

// Reads the foreign keys of a connection without holding up the window, and answers from what was
// read last. Points to the connection between start and the end of the reading.
class ForeignKeys : public OviAPI::Object {
public:
    ForeignKeys();
    ~ForeignKeys() override;

    // The reading has ended: there are keys, or an error.
    virtual bool onForeignKeys();

    // Forgets the keys that there are and reads those of the connection.
    void start(const DorCPP::DorConnect& connection);
    // Leaves what is not read yet.
    void stop();
    bool isRunning() const { return m_timer.isRunning(); }
    // The empty record when there was none.
    const DorCPP::DorX& error() const { return m_error; }

    const std::vector<ForeignKey>& all() const { return m_keys; }
    void setKeys(std::vector<ForeignKey> keys) { m_keys = std::move(keys); }

    // In the order in which the database lists them.
    std::vector<DetailTable> detailsOf(const DatabaseTable& master) const;
    // What a column of a table refers to, by a key of this column alone where there is one. Null
    // when it refers to nothing; valid until the keys are read anew.
    const ForeignKey* masterOf(const DatabaseTable& detail, const std::wstring& column) const;

private:
    OviAPI::SlotResult look(OviAPI::Object*);
    void takeResult();

    std::vector<ForeignKey> m_keys;
    DorCPP::DorX m_error;
    std::unique_ptr<BackgroundStatement> m_statement;
    OviAPI::WTimer m_timer;
};

OVIAPI_SIGNAL(ForeignKeys, onForeignKeys);

// The rows of the detail table that belong to one row of the master table: a parameter for each
// column of the key, in its order.
std::wstring detailQueryText(const ForeignKey& key);
