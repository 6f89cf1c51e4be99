// Tells when something can be read.
#pragma once

#include <atomic>
#include <memory>

#include <oviapi/export.h>
#include <oviapi/object.h>

namespace OviAPI {

// Watches a file descriptor from the event loop. Made at any time, before the application is
// started as well, and destroyed on the user-interface thread; watching begins there as soon as the
// application runs. The descriptor is not owned.
class OVIAPI_API SocketNotifier : public virtual Object {
public:
    explicit SocketNotifier(int socket = -1);
    ~SocketNotifier() override;

    // -1 stops watching. Any thread, and signal handlers.
    void setSocket(int socket) noexcept;
    int socket() const noexcept { return m_socket.load(); }

    // There is something to read, or the other end is closed. Called again as long as that holds.
    virtual bool nRead();

private:
    friend struct Toolkit;
    struct Native;

    void update();

    std::atomic<int> m_socket;
    std::unique_ptr<Native> m_native;
};

} // namespace OviAPI

OVIAPI_SIGNAL(OviAPI::SocketNotifier, nRead);
