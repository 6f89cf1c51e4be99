#include "data/processexecform.h"

#include "data/asynccursor.h"
#include "data/asynccursorquerymode.h"

namespace {

constexpr int interval = 1000; // ms, before the window is shown and before it is hidden

// Strings of the resources.
enum StringId : int {
    CaptionText = 2222180,
    RunningText = 2222181,
    ButtonText = 2222182,
    StoppedText = 2222188,
};
constexpr int textLength = 100; // wide characters at most

// Lengths in px.
constexpr int formWidth = 240;
constexpr int formHeight = 70;
constexpr int labelLeft = 10;
constexpr int labelTop = 10;
constexpr int labelWidth = 200;
constexpr int labelHeight = 17;
constexpr int buttonWidth = 70;
constexpr int buttonHeight = 20;
constexpr int buttonFromBottom = 30;

std::wstring text(int id)
{
    wchar_t buffer[textLength + 1] = {};
    if (const OviAPI::ResourceManager* resources = xRAsyncCursor::resources())
        resources->loadString(id, buffer, textLength + 1);
    return buffer;
}

} // namespace

ProcessExecForm::ProcessExecForm()
    : m_showTimer(interval)
    , m_hideTimer(interval)
{
    OviAPI::connect<&OviAPI::WButton::onPush>(m_button, *this, &ProcessExecForm::onOkPush);
    OviAPI::connect<&OviAPI::WTimer::onTimer>(m_showTimer, *this, &ProcessExecForm::onTimer);
    OviAPI::connect<&OviAPI::WTimer::onTimer>(m_hideTimer, *this, &ProcessExecForm::onTimedHide);
}

ProcessExecForm::~ProcessExecForm() = default;

bool ProcessExecForm::create(xRAsyncCursor* cursor)
{
    m_cursor = cursor;
    if (isCreated())
        return true;
    takeParent();
    setFont(xRAsyncCursor::dialogFont());
    setStyle(style() | DialogFrame);
    move(0, 0, formWidth, formHeight);
    if (!OviAPI::WDialog::create())
        return false;
    m_label.move(labelLeft, labelTop, labelWidth, labelHeight);
    m_button.setStyle(OviAPI::WButton::TabStop | OviAPI::WButton::Visible);
    m_button.move((clientWidth() - buttonWidth) / 2, clientHeight() - buttonFromBottom, buttonWidth,
                  buttonHeight);
    OviAPI::WTypicalControl* const children[] = {&m_label, &m_button};
    for (OviAPI::WTypicalControl* child : children) {
        child->setParent(this);
        child->setFont(font());
        if (!child->create())
            return false;
    }
    setDefaultButton(&m_button);
    onCharsetChanged(this);
    return true;
}

// A modal form blocks all windows but those above it, and the stop button must work.
void ProcessExecForm::takeParent()
{
    OviAPI::WForm* modal = topModal();
    OviAPI::WForm* above = modal ? modal : xRAsyncCursor::masterForm();
    setParent(above && above->isCreated() ? above : nullptr);
}

void ProcessExecForm::statementStarts()
{
    m_hideTimer.stop();
    if (m_stopped) {
        m_stopped = false;
        showState();
    }
    if (!isVisible())
        m_showTimer.start();
}

void ProcessExecForm::showNow()
{
    if (!isVisible())
        takeParent();
    show(true);
}

void ProcessExecForm::statementEnds()
{
    m_showTimer.stop();
    if (isVisible())
        m_hideTimer.start();
}

void ProcessExecForm::statementStopped(std::weak_ptr<const void> handler)
{
    m_stoppedHandler = std::move(handler);
    m_stopped = true;
    showState();
}

void ProcessExecForm::hideNow()
{
    m_showTimer.stop();
    m_hideTimer.stop();
    show(false);
}

OviAPI::SlotResult ProcessExecForm::onCharsetChanged(OviAPI::Object*)
{
    setTitle(text(CaptionText).c_str());
    m_button.setText(text(ButtonText).c_str());
    showState();
    return 0;
}

void ProcessExecForm::showState()
{
    m_label.setText(text(m_stopped ? StoppedText : RunningText).c_str());
    m_button.enable(!m_stopped);
}

OviAPI::SlotResult ProcessExecForm::onTimer(OviAPI::Object*)
{
    m_showTimer.stop();
    if (isCreated())
        showNow();
    return 0;
}

OviAPI::SlotResult ProcessExecForm::onTimedHide(OviAPI::Object*)
{
    if (m_stopped && !m_stoppedHandler.expired())
        return 0; // asked again in a second
    m_hideTimer.stop();
    show(false);
    return 0;
}

OviAPI::SlotResult ProcessExecForm::onOkPush(OviAPI::Object*)
{
    terminate();
    return 0; // the button's own handling follows
}

bool ProcessExecForm::onClose()
{
    terminate();
    m_showTimer.stop();
    m_hideTimer.stop();
    return true;
}

// While the window stays on after the end of its statement, another statement may be waited for.
void ProcessExecForm::terminate()
{
    if (!m_cursor)
        AsyncCursorQueryMode::instance().terminate();
    else if (m_cursor->isWaiting())
        m_cursor->terminate();
}
