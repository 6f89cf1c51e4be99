// The SQL window: an editor, and the answer below it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <oviapi/menu.h>
#include <oviapi/recordview.h>
#include <oviapi/srcedit.h>
#include <oviapi/toolbar.h>

#include "app/extpanel.h"
#include "data/dorcursor.h"
#include "data/dordataset.h"
#include "explorer/noticepanel.h"
#include "explorer/splitterbar.h"
#include "explorer/sqlhistory.h"
#include "explorer/texts.h"

// Executes the statements of its editor one after the other; the windows go on working meanwhile.
// Rows are shown in a record view, everything else as a notice; the place of a fault is marked in
// the editor. Points to the connection.
class SqlPane : public WExtPanel {
public:
    SqlPane();
    ~SqlPane() override;

    bool create() override;

    // A statement has begun or ended: what status gives is another.
    virtual bool onSqlState();

    // Null: there is none any more. Stops what runs.
    void setConnection(const DorCPP::DorConnect* connection);

    // Executes the selection, without one the statement at the caret, and returns when it has
    // ended. Does nothing while another one runs and without a connection.
    void run();
    // Executes every statement of the text until one fails.
    void runAll();
    // Stops what runs, if anything does.
    void stop();
    bool isRunning() const { return m_running; }
    // Whether the statements executed last have changed anything: rows or the structure.
    bool hasChanged() const { return m_changed; }
    // Whether the last of them has failed.
    bool hasFailed() const { return m_answer.kind == Answer::Failed; }
    // For the status line: rows, changed rows or nothing, and how long it took.
    std::wstring status() const;

    SqlHistory& history() { return m_history; }
    // Puts the text of the history into the editor, and back.
    void loadHistory();
    void keepHistory();

    OviAPI::CSrcEdit& editor() { return m_editor; }
    // The view of the rows; not seen while there is a notice.
    OviAPI::aCRecordView& view() { return m_view; }
    NoticePanel& notice() { return m_notice; }
    SplitterBar& splitter() { return m_splitter; }
    OviAPI::WToolBar& toolBar() { return m_tools; }

    enum Tool : int { ToolRun = 1, ToolRunAll, ToolStop, ToolHistory };

    void loadTexts();
    bool onSize() override;

private:
    // How an execution ended.
    struct Answer {
        enum Kind { None, Rows, Changed, Done, Failed, Stopped };
        Kind kind = None;
        int64_t rows = 0; // given or changed
        DorCPP::DorX error;
        int64_t milliseconds = 0; // of all statements
    };
    class Cursor;

    OviAPI::SlotResult onTool(OviAPI::Object*, int tool);
    OviAPI::SlotResult onHistoryOpens(OviAPI::Object*, int tool);
    OviAPI::SlotResult onEditorKey(OviAPI::Object*, OviAPI::VirtualKey key);
    OviAPI::SlotResult onSplit(OviAPI::Object*, int top);

    void start(const std::vector<OviAPI::SrcRange>& ranges);
    bool begin(const OviAPI::SrcRange& range);
    void takeResult();
    void fail(const DorCPP::DorX& error);
    void waitForEnd();
    void finish();
    void showRows();
    void showNotice();
    void dropAnswer();
    void tell();
    void updateTools();
    void layOut();

    const DorCPP::DorConnect* m_connection = nullptr;
    SqlHistory m_history;
    OviAPI::SrcRange m_range; // of the statement that runs
    std::wstring m_text;      // of the one that runs or has given the answer
    std::unique_ptr<Cursor> m_cursor;
    unsigned m_run = 0; // counts executions, and connections
    bool m_running = false;
    bool m_changed = false;
    Answer m_answer;
    std::unique_ptr<xCDorvexDataSet> m_data;

    OviAPI::WMenu m_historyMenu;
    OviAPI::WToolBar m_tools;
    OviAPI::CSrcEdit m_editor;
    SplitterBar m_splitter;
    int m_top = 0; // of the splitter, px; 0: two fifths of the height
    OviAPI::aCRecordView m_view;
    NoticePanel m_notice;
};

OVIAPI_SIGNAL(SqlPane, onSqlState);
