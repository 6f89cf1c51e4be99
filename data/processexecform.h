// The window of a statement that takes longer.
#pragma once

#include <memory>

#include <oviapi/button.h>
#include <oviapi/dialog.h>
#include <oviapi/static.h>
#include <oviapi/timer.h>

#include "app/export.h"

class xRAsyncCursor;

// Tells that a statement runs, with a button that stops it. Appears when the statement has taken a
// second and stays a second longer than it, so that it does not flicker. After a stop it says that
// the server has been asked to stop, and stays until the server has. Font, resources and parent are
// those of xRAsyncCursor::init. User-interface thread only.
class OVIEXT_API ProcessExecForm : public virtual OviAPI::WDialog {
public:
    ProcessExecForm();
    ~ProcessExecForm() override;

    // The cursor is pointed to; null: the button ends the innermost wait, whosever it is. True when
    // the window exists afterwards.
    bool create(xRAsyncCursor* cursor);
    using OviAPI::WDialog::create;

    // A statement starts: the window appears in a second, or stays when it is there.
    void statementStarts();
    // Shows the window now.
    void showNow();
    // The statement has ended: the window goes in a second.
    void statementEnds();
    // The statement was stopped: says so until the handler whose life it is has been freed, and
    // goes then.
    void statementStopped(std::weak_ptr<const void> handler);
    // Hides the window at once.
    void hideNow();

    // Sets all texts.
    OviAPI::SlotResult onCharsetChanged(OviAPI::Object* sender) override;
    // Shows the window.
    OviAPI::SlotResult onTimer(OviAPI::Object* sender);
    // Hides the window, unless the server still works on a statement that was stopped.
    OviAPI::SlotResult onTimedHide(OviAPI::Object* sender);
    // Stops the statement.
    OviAPI::SlotResult onOkPush(OviAPI::Object* sender);
    // The same; the window closes.
    bool onClose() override;

protected:
    OviAPI::WTimer m_showTimer;
    OviAPI::WStatic m_label;
    OviAPI::WButton m_button;
    OviAPI::WTimer m_hideTimer;
    xRAsyncCursor* m_cursor = nullptr;

private:
    void takeParent();
    void terminate();
    void showState();

    bool m_stopped = false;
    std::weak_ptr<const void> m_stoppedHandler;
};
