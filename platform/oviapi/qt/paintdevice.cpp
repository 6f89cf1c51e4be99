#include "paintdevice.h"

#include <algorithm>
#include <vector>

#include <QGuiApplication>

#include "convert.h"
#include "painter_native.h"
#include "picture_native.h"

namespace OviAPI {

namespace {

constexpr int dotsPerMeter = 3780; // 96 dots an inch, so that text has its usual size

// The paint events that run now, the innermost last.
std::vector<PaintDevice::Native*>& sessions()
{
    static std::vector<PaintDevice::Native*> list;
    return list;
}

} // namespace

PaintDevice::Native::~Native()
{
    if (qt.isActive())
        qt.end();
    if (pixels)
        pixels->painted = false;
}

bool PaintDevice::Native::isUsable() const
{
    return (widget || pixels) && qGuiApp;
}

QPaintDevice* PaintDevice::Native::device() const
{
    if (pixels)
        return &pixels->variants.front();
    return widget;
}

PaintDevice::Native* PaintDevice::Native::drawable()
{
    if (painting)
        return this;
    for (auto session = sessions().rbegin(); session != sessions().rend(); ++session) {
        if (widget && (*session)->widget == widget)
            return *session;
    }
    return nullptr;
}

PaintDevice::PaintDevice() = default;
PaintDevice::PaintDevice(std::shared_ptr<Native> native)
    : m_native(std::move(native))
{
}
PaintDevice::~PaintDevice() = default;
PaintDevice::PaintDevice(PaintDevice&&) noexcept = default;
PaintDevice& PaintDevice::operator=(PaintDevice&&) noexcept = default;

PaintDevice::PaintDevice(Picture& picture)
{
    if (picture.isNull() || !qGuiApp || picture.m_native->painted)
        return;
    picture.detached();
    auto native = std::make_shared<Native>();
    native->pixels = picture.m_native;
    native->pixels->variants.resize(1);
    QImage& image = native->pixels->variants.front();
    image.setDotsPerMeterX(dotsPerMeter);
    image.setDotsPerMeterY(dotsPerMeter);
    if (!native->qt.begin(&image))
        return;
    native->pixels->painted = true;
    native->painting = true;
    m_native = std::move(native);
}

bool PaintDevice::measuresOnly() const
{
    return m_native && !m_native->drawable();
}

Size PaintDevice::size() const
{
    if (!m_native || !m_native->isUsable())
        return {};
    if (m_native->pixels)
        return fromQSize(m_native->pixels->variants.front().deviceIndependentSize().toSize());
    return fromQSize(m_native->widget->size());
}

Rect PaintDevice::clipRect() const
{
    const Size whole = size();
    const QRect all(0, 0, whole.width, whole.height);
    const bool limited = m_native && !m_native->clip.isNull();
    return fromQRect(limited ? all & m_native->clip : all);
}

double PaintDevice::pixelRatio() const
{
    return m_native && m_native->isUsable() ? m_native->device()->devicePixelRatio() : 1.0;
}

PaintSession::PaintSession(QWidget* widget, const QRect& clip)
{
    auto native = std::make_shared<PaintDevice::Native>();
    native->widget = widget;
    native->clip = clip;
    if (!widget || !native->qt.begin(widget))
        return;
    native->painting = true;
    sessions().push_back(native.get());
    m_device = PaintDevice(std::move(native));
}

PaintSession::~PaintSession()
{
    if (m_device.isNull())
        return;
    PaintDevice::Native& native = *m_device.native();
    std::erase(sessions(), &native);
    native.qt.end();
    native.painting = false;
    native.widget = nullptr;
}

PaintDevice clientDevice(QWidget* widget)
{
    if (!widget)
        return PaintDevice();
    auto native = std::make_shared<PaintDevice::Native>();
    native->widget = widget;
    return PaintDevice(std::move(native));
}

QPainter* qtPainter(Painter& painter)
{
    if (!painter.native())
        return nullptr;
    QPainter* qt = painter.native()->begin();
    if (qt)
        painter.native()->device->drawable()->current = nullptr;
    return qt;
}

} // namespace OviAPI
