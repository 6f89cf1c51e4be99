// Counts the rows of tables one after the other without holding up the window.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <oviapi/timer.h>

#include "explorer/backgroundstatement.h"
#include "explorer/databasesession.h"

struct TableCount {
    enum State { Known, GivenUp, Failed };

    State state = Known;
    long rows = 0;        // when known
    DorCPP::DorX error{}; // when it failed
};

// Each count is a statement of its own on a worker; one that takes longer than the limit is
// stopped. The results come from the event loop, in the order of the tables. Points to the
// session's connection between start and stop.
class TableCounter : public OviAPI::Object {
public:
    using Report = std::function<void(size_t table, const TableCount& count)>;

    explicit TableCounter(std::chrono::milliseconds limit = std::chrono::milliseconds(2000));
    ~TableCounter() override;

    void start(const DorCPP::DorConnect& connection, const std::vector<DatabaseTable>& tables,
               Report report);
    // Leaves what is not counted yet.
    void stop();
    bool isRunning() const { return m_timer.isRunning(); }

private:
    OviAPI::SlotResult look(OviAPI::Object*);
    void beginNext();
    void takeResult();
    void give(const TableCount& count);

    std::chrono::milliseconds m_limit;
    const DorCPP::DorConnect* m_connection = nullptr;
    std::vector<std::wstring> m_references;
    size_t m_next = 0; // table that is counted, or is to be counted next
    Report m_report;
    std::unique_ptr<BackgroundStatement> m_current;
    std::chrono::steady_clock::time_point m_started;
    std::vector<std::unique_ptr<BackgroundStatement>> m_stopping; // given up, not ended yet
    OviAPI::WTimer m_timer;
};
