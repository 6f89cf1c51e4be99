// A session: an engine's connection shared by connections and cursors.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <dorcpp/driver.h>
#include <dorcpp/translate.h>

namespace DorCPP {

// Locks itself: the driver is reached through Use, by one thread at a time. Any thread.
class Session : public std::enable_shared_from_this<Session> {
public:
    // Opens the database. registered: find knows the session.
    static std::shared_ptr<Session> open(const Target& target, int mode, bool registered);
    // Null when no such session is open.
    static std::shared_ptr<Session> find(int channel);
    // Makes the registry exist, so that it outlives the caller.
    static void registerBefore();

    Session(const Target& target, int mode, int channel);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // The driver, for as long as the object lives. Waits for the thread that has it; when that runs
    // an asynchronous statement, 200 ms at most, then throws DorX (CodeBusy).
    class Use {
    public:
        explicit Use(Session& session, bool asynchronous = false);
        ~Use();
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;
        Driver& operator*() const { return *m_session.m_driver; }
        Driver* operator->() const { return m_session.m_driver.get(); }

    private:
        Session& m_session;
    };

    int channel() const { return m_channel; }
    int mode() const { return m_mode; }
    SqlDialect dialect() const { return m_dialect; }

    // Whether a statement of this kind may run on another connection and mean the same. Waits for
    // nobody.
    bool mayRunElsewhere(StatementKind kind) const;
    // A connection beside the session's own that an earlier statement left, or null. It may have
    // been lost since.
    std::unique_ptr<Driver> takeSpare();
    // Makes one; null when there can be none. Waits for the engine, and for no thread.
    std::unique_ptr<Driver> connectBeside() const { return m_driver->duplicate(); }
    void giveBack(std::unique_ptr<Driver> driver);

    // Before a statement of this kind starts on the session's own connection asynchronously.
    void noteStarting(StatementKind kind);
    // After a statement of this kind was executed, here or beside.
    void noteExecuted(StatementKind kind);
    // Counts the statements that may have changed rows; rows read under an older count are read
    // anew.
    uint64_t changes() const { return m_changes; }
    // Returns the new count.
    uint64_t countChange() { return ++m_changes; }

    // The columns of a table, kept for a second: another session may change the table. Empty when
    // there is no such table.
    std::shared_ptr<const TableColumns> columnsOf(Driver& driver, const std::string& schema,
                                                  const std::string& table);
    // After anything that may have changed a table.
    void forgetColumns();

    const std::string& tableListText() const { return m_tableListText; }
    const std::string& foreignKeyListText() const { return m_foreignKeyListText; }

private:
    struct KnownTable {
        std::string schema;
        std::string table;
        std::shared_ptr<const TableColumns> columns;
        std::chrono::steady_clock::time_point read;
    };

    const int m_mode;
    const int m_channel;
    const bool m_inMemory;
    const std::unique_ptr<Driver> m_driver;
    const SqlDialect m_dialect;
    const std::string m_tableListText;
    const std::string m_foreignKeyListText;

    std::mutex m_mutex; // guards the four below
    std::condition_variable m_free;
    bool m_used = false;
    bool m_usedAsynchronously = false;
    std::unique_ptr<Driver> m_spare;
    std::vector<KnownTable> m_known;

    std::atomic<bool> m_inTransaction = false; // at the end of the latest use, or about to be
    std::atomic<bool> m_hasState = false;
    std::atomic<uint64_t> m_changes = 0;
};

} // namespace DorCPP
