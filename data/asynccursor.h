// A cursor that executes without freezing the windows.
#pragma once

#include <functional>
#include <memory>

#include <dorcpp/cursor.h>
#include <oviapi/font.h>
#include <oviapi/form.h>
#include <oviapi/object.h>
#include <oviapi/resourcemanager.h>

#include "app/export.h"
#include "data/processexecform.h"

// Executes a statement on a thread of the database client and waits for it in a local event loop:
// windows go on working, and a small window with a stop button appears when the statement takes
// longer than a second.
//
// The waits of several cursors may be nested (query mode, the usual one); the innermost ends first.
// A single-level wait is one at a time in the whole process.
//
// Errors are thrown as DorX. That of an asynchronous statement has status -1 and the error code and
// no text: the record with the texts is lastError(). A statement that was terminated, by the user
// or because the application was quitted meanwhile, is no error: the cursor is closed, the
// statement cancelled, and execute returns. What an event handler throws during the wait goes
// through execute; the statement is then cancelled as well.
//
// A cursor may be destroyed by an event during its own wait: the statement is cancelled, the wait
// ends when those inside it have, and execute throws DorX (CodeCancelled), so that nobody goes on
// with the object. User-interface thread only.
class OVIEXT_API xRAsyncCursor : public DorCPP::DorCursor, public virtual OviAPI::Object {
public:
    xRAsyncCursor();
    ~xRAsyncCursor() override;

    // For the progress windows of all cursors. The font is copied. resources gives their texts,
    // master is their parent; null leaves the one before. Neither is owned; resources must outlive
    // the cursors.
    static void init(OviAPI::Font font, OviAPI::ResourceManager* resources, OviAPI::WForm* master);
    static const OviAPI::Font& dialogFont();
    static OviAPI::ResourceManager* resources(); // null when not set
    static OviAPI::WForm* masterForm();          // null when not set or gone

    // Without async as DorCursor::execute. single: waits in the single-level mode; while another
    // single-level wait is under way this does nothing at all.
    void execute(const char* sql, bool async, bool single);
    void execute(const DorCPP::DorStatement& statement, const DorCPP::BindMap* binds, bool async,
                 bool single);
    using DorCPP::DorCursor::execute;

    // Execute in query mode.
    void asyncExec(const char* sql);
    void asyncExec(const DorCPP::DorStatement& statement, const DorCPP::BindMap* binds);
    // Execute in single-level mode.
    void singleAsyncExec(const char* sql);
    void singleAsyncExec(const DorCPP::DorStatement& statement, const DorCPP::BindMap* binds);

    // Ends the wait: the innermost one, or the single-level one after an execution in that mode.
    // Does nothing when there is none.
    void terminate();
    // Whether an execution of this cursor waits.
    bool isWaiting() const { return m_waiting != nullptr; }

    // The progress window when a statement starts, when it is to be seen at once, and when it has
    // ended. Nothing happens while progress is not shown.
    void initCancel();
    void doShowCancel();
    void hideCancel();
    // Whether the window is used: true at first.
    void setShowProgress(bool on);
    bool showsProgress() const { return m_showProgress; }

    void close() override;

    // Expires when the cursor is destroyed.
    std::weak_ptr<const void> life() const { return m_life; }

protected:
    ProcessExecForm m_form;
    bool m_showProgress = true;
    bool m_singleLevel = false;

private:
    class Waiting;
    using Start = std::function<void(DorCPP::DorCursor::Handler*)>;

    void queryModeExec(const Start& start);
    void singleLevelExec(const Start& start);
    void stopped(std::weak_ptr<const void> handler);
    void leaveCallback() const;

    Waiting* m_waiting = nullptr; // the innermost execution of this cursor that waits
    std::shared_ptr<const void> m_life;
};
