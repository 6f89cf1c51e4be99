#include "data/asynccursor.h"

#include <dorcpp/types.h>
#include <oviapi/onelevelguiwaiter.h>

#include "data/asynccursorquerymode.h"

using DorCPP::DorX;
using OviAPI::OneLevelGUIWaiter;

namespace {

// What xRAsyncCursor::init sets.
struct DialogSettings {
    OviAPI::Font font;
    OviAPI::ResourceManager* resources = nullptr;
    OviAPI::WForm* master = nullptr;
    std::weak_ptr<const void> masterLife;
};

DialogSettings& dialogSettings()
{
    static DialogSettings settings;
    return settings;
}

} // namespace

// One execution of a cursor from its start to its end. Stands in the execution's own call, so it
// outlives a cursor that is destroyed meanwhile.
class xRAsyncCursor::Waiting {
public:
    Waiting(xRAsyncCursor& cursor, bool single)
        : m_cursor(&cursor)
        , m_outer(cursor.m_waiting)
        , m_wait(AsyncCursorQueryMode::instance().waitCount())
        , m_single(single)
    {
        cursor.initCancel();
        cursor.m_waiting = this;
    }
    ~Waiting()
    {
        if (!m_cursor)
            return;
        m_cursor->m_waiting = m_outer;
        if (!m_outer)
            m_cursor->hideCancel();
    }
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;

    // Throws DorX when the cursor has gone.
    void checkCursor() const
    {
        if (!m_cursor)
            throw DorX(-1, DorCPP::CodeCancelled, "");
    }
    bool hasCursor() const { return m_cursor != nullptr; }

    // Ends this execution and those around it for a cursor that goes.
    static void endAll(Waiting* innermost)
    {
        for (Waiting* each = innermost; each; each = each->m_outer) {
            each->m_cursor = nullptr;
            if (each->m_single)
                OneLevelGUIWaiter::Break();
            else
                AsyncCursorQueryMode::instance().terminate(each->m_wait);
        }
    }

private:
    xRAsyncCursor* m_cursor; // null: gone
    Waiting* m_outer;        // of the same cursor
    uint32_t m_wait;         // its number in query mode
    bool m_single;
};

xRAsyncCursor::xRAsyncCursor()
    : m_life(std::make_shared<char>())
{
}

xRAsyncCursor::~xRAsyncCursor()
{
    Waiting::endAll(m_waiting);
}

void xRAsyncCursor::init(OviAPI::Font font, OviAPI::ResourceManager* resources,
                         OviAPI::WForm* master)
{
    DialogSettings& settings = dialogSettings();
    settings.font = std::move(font);
    if (resources)
        settings.resources = resources;
    if (master) {
        settings.master = master;
        settings.masterLife = master->life();
    }
}

const OviAPI::Font& xRAsyncCursor::dialogFont()
{
    return dialogSettings().font;
}

OviAPI::ResourceManager* xRAsyncCursor::resources()
{
    return dialogSettings().resources;
}

OviAPI::WForm* xRAsyncCursor::masterForm()
{
    const DialogSettings& settings = dialogSettings();
    return settings.masterLife.expired() ? nullptr : settings.master;
}

void xRAsyncCursor::execute(const char* sql, bool async, bool single)
{
    if (!async) {
        DorCursor::execute(sql, nullptr);
        return;
    }
    m_singleLevel = single;
    if (single)
        singleAsyncExec(sql);
    else
        asyncExec(sql);
    leaveCallback();
}

void xRAsyncCursor::execute(const DorCPP::DorStatement& statement, const DorCPP::BindMap* binds,
                            bool async, bool single)
{
    if (!async) {
        DorCursor::execute(statement, binds, nullptr);
        return;
    }
    m_singleLevel = single;
    if (single)
        singleAsyncExec(statement, binds);
    else
        asyncExec(statement, binds);
    leaveCallback();
}

void xRAsyncCursor::asyncExec(const char* sql)
{
    queryModeExec([&](Handler* handler) { DorCursor::execute(sql, handler); });
}

void xRAsyncCursor::asyncExec(const DorCPP::DorStatement& statement, const DorCPP::BindMap* binds)
{
    queryModeExec([&](Handler* handler) { DorCursor::execute(statement, binds, handler); });
}

void xRAsyncCursor::singleAsyncExec(const char* sql)
{
    singleLevelExec([&](Handler* handler) { DorCursor::execute(sql, handler); });
}

void xRAsyncCursor::singleAsyncExec(const DorCPP::DorStatement& statement,
                                    const DorCPP::BindMap* binds)
{
    singleLevelExec([&](Handler* handler) { DorCursor::execute(statement, binds, handler); });
}

void xRAsyncCursor::queryModeExec(const Start& start)
{
    AsyncCursorQueryMode& mode = AsyncCursorQueryMode::instance();
    const Waiting waiting(*this, false);
    AsyncCursorHandler* handler = mode.dorHandler();
    const std::weak_ptr<const void> handlerLife = handler->life();
    try {
        start(handler);
    } catch (...) {
        mode.dropHandler();
        throw;
    }
    HandlerManager::instance().statementStarted();
    try {
        mode.wait();
    } catch (const AsyncCursorQueryMode::Terminate&) {
        waiting.checkCursor();
        stopped(handlerLife);
    } catch (...) {
        if (waiting.hasCursor() && isRunning()) // thrown by an event handler
            stopped(handlerLife);
        throw;
    }
    waiting.checkCursor();
}

void xRAsyncCursor::singleLevelExec(const Start& start)
{
    // Kept: a wait inside another one is refused without a word, and nothing is executed.
    if (OneLevelGUIWaiter::m_exists)
        return;
    const Waiting waiting(*this, true);
    OneLevelHandler handler;
    auto owned = std::make_unique<OneLevelRelay>(handler);
    const std::weak_ptr<const void> relayLife = owned->life();
    OneLevelGUIWaiter::Init();
    try {
        start(owned.get());
    } catch (...) {
        OneLevelGUIWaiter::Cancel();
        throw;
    }
    HandlerManager::instance().statementStarted();
    std::unique_ptr<OneLevelRelay, LeaveHandler> relay(owned.release());
    int result = OneLevelGUIWaiter::Broken;
    try {
        result = OneLevelGUIWaiter::Wait();
    } catch (...) {
        relay.reset();
        if (waiting.hasCursor() && isRunning())
            stopped(relayLife);
        throw;
    }
    relay.reset(); // from here on the handler is not touched
    waiting.checkCursor();
    if (result != OneLevelGUIWaiter::Completed)
        stopped(relayLife);
    const DorX end = handler.result();
    if (end.status() != 0)
        throw end;
}

// Cancels the statement of a wait that has ended before it.
void xRAsyncCursor::stopped(std::weak_ptr<const void> handler)
{
    try {
        close();
    } catch (const std::exception&) {
        // What was stopped is of no interest any more.
    }
    if (!handler.expired())
        m_form.statementStopped(std::move(handler));
}

// The client may still be returning from its callback.
void xRAsyncCursor::leaveCallback() const
{
    constexpr int attempts = 100;
    try {
        for (int i = 0; i < attempts && isInCallback(); ++i)
            DorCPP::DelayThread(0);
    } catch (const DorX&) {
        // A cursor that was never made is in no callback.
    }
}

void xRAsyncCursor::terminate()
{
    if (m_singleLevel)
        OneLevelGUIWaiter::Break();
    else
        AsyncCursorQueryMode::instance().terminate();
}

void xRAsyncCursor::initCancel()
{
    if (!m_showProgress)
        return;
    if (!m_form.isCreated())
        m_form.create(this);
    m_form.statementStarts();
}

void xRAsyncCursor::doShowCancel()
{
    if (!m_showProgress)
        return;
    if (!m_form.isCreated())
        m_form.create(this);
    m_form.showNow();
}

void xRAsyncCursor::hideCancel()
{
    if (m_showProgress)
        m_form.statementEnds();
}

void xRAsyncCursor::setShowProgress(bool on)
{
    m_showProgress = on;
    if (!on)
        m_form.hideNow();
}

void xRAsyncCursor::close()
{
    hideCancel();
    DorCursor::close();
}
