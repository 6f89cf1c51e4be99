#include <oviapi/timer.h>

#include <algorithm>

#include <QPointer>
#include <QTimer>

#include "native.h"
#include "toolkit.h"

namespace OviAPI {

struct WTimer::Native {
    ~Native() { delete timer.data(); }
    QPointer<QTimer> timer; // the toolkit destroys it when it ends first
};

WTimer::WTimer(int interval)
    : m_native(std::make_unique<Native>())
    , m_interval(interval)
{
}

WTimer::~WTimer() = default;

bool WTimer::onTimer()
{
    return false;
}

void WTimer::setInterval(int interval)
{
    m_interval = interval;
    if (isRunning())
        start();
}

bool WTimer::start()
{
    const Toolkit* toolkit = Toolkit::current();
    if (!toolkit)
        return false;
    QPointer<QTimer>& timer = m_native->timer;
    if (!timer) {
        timer = new QTimer(toolkit->office.get());
        timer->setTimerType(Qt::PreciseTimer);
        QObject::connect(timer, &QTimer::timeout, timer.data(),
                         [this] { barrier([&] { dispatch<&WTimer::onTimer>(*this); }); });
    }
    timer->start(std::max(m_interval, 0));
    return true;
}

void WTimer::stop()
{
    if (m_native->timer)
        m_native->timer->stop();
}

bool WTimer::isRunning() const
{
    return m_native->timer && m_native->timer->isActive();
}

} // namespace OviAPI
