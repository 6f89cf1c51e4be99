// The statement monitor: everything sent to the engines, as it happens.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <oviapi/checkbox.h>
#include <oviapi/memorydataset.h>
#include <oviapi/recordview.h>
#include <oviapi/timer.h>
#include <oviapi/toolbar.h>

#include "app/extpanel.h"
#include "explorer/monitorlog.h"

// Watches from create on until the object goes. The values in the statements, and the words of
// errors, which may hold values, are shown on demand only. Copies what is shown.
class MonitorPane : public WExtPanel {
public:
    enum Column : int { Time = 1, Duration = 2, Rows = 3, Statement = 4, Error = 5 };
    enum Tool : int { ToolCopy = 1, ToolClear };

    MonitorPane();
    ~MonitorPane() override;

    bool create() override;

    // Starts and ends the watching; what is there stays.
    void watch(bool on);
    bool isWatching() const { return m_watch != nullptr; }
    // The engine whose rules tell what a value is, "SQLite".
    void setEngine(const std::string& engine) { m_engine = engine; }
    // Shows what has been sent since the last look.
    void refresh();
    // Copies the selected cells with the captions, without a selection everything.
    void copy();
    void clear();

    OviAPI::aCRecordView& view() { return m_view; }
    OviAPI::WCheckBox& valuesBox() { return m_values; }
    OviAPI::WToolBar& toolBar() { return m_tools; }

    void loadTexts();
    bool onSize() override;

private:
    OviAPI::SlotResult onTool(OviAPI::Object*, int tool);
    OviAPI::SlotResult onValues(OviAPI::Object*);
    OviAPI::SlotResult look(OviAPI::Object*);
    void addTableColumn(const wchar_t* name);
    void fill();
    std::wstring statementText(const MonitorEntry& entry) const;
    std::wstring errorText(const MonitorEntry& entry) const;
    void layOut();

    std::shared_ptr<MonitorLog> m_log;
    std::unique_ptr<MonitorWatch> m_watch;
    std::string m_engine = "SQLite";
    uint64_t m_shown = 0; // the revision on the screen
    OviAPI::aCMemoryDataSet m_data;
    OviAPI::WToolBar m_tools;
    OviAPI::WCheckBox m_values;
    OviAPI::aCRecordView m_view;
    OviAPI::WTimer m_timer;
};
