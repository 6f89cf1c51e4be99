#include "data/asynccursorhandler.h"

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <dorcpp/types.h>
#include <oviapi/application.h>
#include <oviapi/onelevelguiwaiter.h>

namespace {

// Never closed: a callback may come as long as the process lives.
struct Pipe {
    int readEnd = -1;
    int writeEnd = -1;
};
constinit Pipe lateHandlers;
constinit std::atomic<bool> watched = false;
constinit std::atomic<bool> processEnds = false;

constinit std::atomic<int64_t> handlersMade = 0;
constinit std::atomic<int64_t> handlersFreed = 0;

// The signals in which a database client may call back do not come while it lives.
class CompletionSignalsBlocked {
public:
    CompletionSignalsBlocked()
    {
        sigset_t signals;
        sigemptyset(&signals);
        for (const int signal : {SIGCHLD, SIGUSR1, SIGIO})
            sigaddset(&signals, signal);
        pthread_sigmask(SIG_BLOCK, &signals, &m_before);
    }
    ~CompletionSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    CompletionSignalsBlocked(const CompletionSignalsBlocked&) = delete;
    CompletionSignalsBlocked& operator=(const CompletionSignalsBlocked&) = delete;

private:
    sigset_t m_before;
};

DorCPP::DorX endRecord(unsigned short status, int code)
{
    return DorCPP::DorX(code != 0 ? -1 : 0, status, "");
}

// Sleeps until something can be written, and a little while at most: nobody may read any more.
void waitForRoom()
{
    pollfd writable{lateHandlers.writeEnd, POLLOUT, 0};
    constexpr int milliseconds = 20;
    ::poll(&writable, 1, milliseconds);
}

// The next handler in the pipe; null when there is none.
HandedHandler* readHandler()
{
    const CompletionSignalsBlocked blocked;
    HandedHandler* handler = nullptr;
    size_t got = 0;
    while (got < sizeof handler) {
        const ssize_t n = ::read(lateHandlers.readEnd, reinterpret_cast<char*>(&handler) + got,
                                 sizeof handler - got);
        if (n > 0)
            got += static_cast<size_t>(n);
        else if (n == 0 || (errno != EINTR && (errno != EAGAIN || got == 0)))
            return nullptr;
    }
    return handler;
}

// Exists once the client's threads do, so it goes before they are waited for at the end.
struct EndOfProcess {
    ~EndOfProcess() { processEnds = true; }
};

// Made when the library is loaded: destroyed after the client's threads, whose last handlers it
// frees.
[[maybe_unused]] const HandlerManager& madeAtLoad = HandlerManager::instance();

} // namespace

HandedHandler::HandedHandler()
    : m_life(std::make_shared<char>())
{
    ++handlersMade;
}

HandedHandler::~HandedHandler()
{
    ++handlersFreed;
}

HandedHandler::Count HandedHandler::count()
{
    return {handlersMade, handlersFreed};
}

void AsyncCursorHandler::handler(unsigned short status, int code)
{
    m_status = status;
    m_code = code;
    // When this call is first, the object belongs to the wait from here on.
    if (m_done.exchange(1, std::memory_order_acq_rel) != 0)
        HandlerManager::post(this);
}

void AsyncCursorHandler::leave()
{
    int before = 0;
    {
        const CompletionSignalsBlocked blocked;
        before = m_done.exchange(1, std::memory_order_acq_rel);
    }
    if (before != 0)
        delete this;
}

DorCPP::DorX AsyncCursorHandler::result() const
{
    return endRecord(m_status, m_code);
}

void OneLevelHandler::handler(unsigned short status, int code)
{
    m_status = status;
    m_code = code;
    OviAPI::OneLevelGUIWaiter::Leave();
}

DorCPP::DorX OneLevelHandler::result() const
{
    return endRecord(m_status, m_code);
}

void OneLevelRelay::handler(unsigned short status, int code)
{
    int expected = Attached;
    if (!m_state.compare_exchange_strong(expected, Passing)) {
        HandlerManager::post(this);
        return;
    }
    m_to.handler(status, code);
    m_state.store(Passed, std::memory_order_release); // from here on the object is the wait's
}

void OneLevelRelay::leave()
{
    int expected = Attached;
    {
        const CompletionSignalsBlocked blocked;
        if (m_state.compare_exchange_strong(expected, Left))
            return;
    }
    while (m_state.load(std::memory_order_acquire) != Passed)
        DorCPP::DelayThread(0);
    delete this;
}

HandlerManager& HandlerManager::instance()
{
    static HandlerManager manager;
    return manager;
}

HandlerManager::HandlerManager()
{
    int ends[2];
    if (::pipe2(ends, O_NONBLOCK | O_CLOEXEC) == 0)
        lateHandlers = {ends[0], ends[1]};
}

HandlerManager::~HandlerManager()
{
    processEnds = true;
    while (HandedHandler* handler = readHandler())
        onPost(handler);
}

void HandlerManager::watch() noexcept
{
    if (!watched.exchange(true))
        instance().setSocket(lateHandlers.readEnd);
}

void HandlerManager::statementStarted()
{
    static const EndOfProcess end;
    watch();
}

bool HandlerManager::nRead()
{
    watch();
    while (HandedHandler* handler = readHandler()) // reading does not wait
        onPost(handler);
    return true;
}

bool HandlerManager::onPost(void* handler)
{
    delete static_cast<HandedHandler*>(handler);
    return true;
}

void HandlerManager::post(HandedHandler* handler) noexcept
{
    static_assert(sizeof handler == 8, "written into the pipe whole or not at all");
    const int error = errno; // a signal handler must not change it
    while (true) {
        if (processEnds) {
            delete handler;
            break;
        }
        watch();
        if (::write(lateHandlers.writeEnd, &handler, sizeof handler) == sizeof handler)
            break;
        if (errno == EAGAIN) {
            // On this thread nobody could make room: better a handler that is never freed.
            if (OviAPI::Application::isUserInterfaceThread())
                break;
            waitForRoom();
        } else if (errno != EINTR) {
            break; // given up; the handler is not freed
        }
    }
    errno = error;
}
