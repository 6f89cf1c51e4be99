// A session: an engine's connection shared by connections and cursors.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>

#include <dorcpp/driver.h>

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

    Session(std::unique_ptr<Driver> driver, Target target, int mode);
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

    // Whether a statement of this kind may run on another connection and mean the same.
    bool mayRunElsewhere(StatementKind kind);
    // A connection beside the session's own; null when there can be none.
    std::unique_ptr<Driver> takeSpare();
    void giveBack(std::unique_ptr<Driver> driver);

    // After a statement of this kind was executed on the session's own connection.
    void noteExecuted(StatementKind kind);
    // Counts the statements that may have changed rows; rows read under an older count are read
    // anew.
    uint64_t changes() const { return m_changes; }
    void countChange() { ++m_changes; }

private:
    const Target m_target;
    const int m_mode;
    int m_channel = 0;
    std::unique_ptr<Driver> m_driver;
    const SqlDialect m_dialect;

    std::mutex m_mutex; // guards the three below
    std::condition_variable m_free;
    bool m_used = false;
    bool m_usedAsynchronously = false;
    std::unique_ptr<Driver> m_spare;

    std::atomic<bool> m_hasState = false;
    std::atomic<uint64_t> m_changes = 0;
};

} // namespace DorCPP
