#include <oviapi/socketnotifier.h>

#include <algorithm>
#include <vector>

#include <QPointer>
#include <QSocketNotifier>

#include <oviapi/application.h>

#include "native.h"
#include "toolkit.h"

namespace OviAPI {

namespace {

// Never destroyed: notifiers with static storage may be destroyed after any other static.
std::vector<SocketNotifier*>& registry()
{
    static auto* notifiers = new std::vector<SocketNotifier*>;
    return *notifiers;
}

} // namespace

struct SocketNotifier::Native {
    ~Native() { delete watch.data(); }
    QPointer<QSocketNotifier> watch; // the toolkit destroys it when it ends first
    int watched = -1;
};

SocketNotifier::SocketNotifier(int socket)
    : m_socket(socket)
    , m_native(std::make_unique<Native>())
{
    registry().push_back(this);
    Application::wakeUp();
}

SocketNotifier::~SocketNotifier()
{
    std::erase(registry(), this);
}

void SocketNotifier::setSocket(int socket) noexcept
{
    m_socket = socket;
    Application::wakeUp();
}

bool SocketNotifier::nRead()
{
    return false;
}

void SocketNotifier::update()
{
    const int wanted = m_socket;
    if (m_native->watched == wanted && (wanted < 0 || m_native->watch))
        return;
    delete m_native->watch.data();
    m_native->watched = wanted;
    if (wanted < 0)
        return;
    auto* watch =
        new QSocketNotifier(wanted, QSocketNotifier::Read, Toolkit::current()->office.get());
    m_native->watch = watch;
    QObject::connect(watch, &QSocketNotifier::activated, watch, [this, wanted] {
        if (m_socket == wanted)
            barrier([&] { dispatch<&SocketNotifier::nRead>(*this); });
    });
}

void Toolkit::updateNotifiers()
{
    for (SocketNotifier* notifier : registry())
        notifier->update();
}

} // namespace OviAPI
