#include <oviapi/apswnd.h>

#include <algorithm>

#include <QHelpEvent>
#include <QMouseEvent>
#include <QStyleOptionSlider>
#include <QToolTip>

#include <oviapi/painter.h>
#include <oviapi/recordgeometry.h>

#include "apswnd_native.h"
#include "convert.h"
#include "keys.h"

namespace OviAPI {

// Painting a bar takes longer than painting a row, and on a long range most steps move the thumb by
// less than a pixel.
void ThriftyBar::place(int value)
{
    const QRect before = thumb();
    const bool off = testAttribute(Qt::WA_UpdatesDisabled);
    setAttribute(Qt::WA_UpdatesDisabled);
    setValue(value);
    setAttribute(Qt::WA_UpdatesDisabled, off);
    if (thumb() != before)
        update();
}

QRect ThriftyBar::thumb() const
{
    QStyleOptionSlider option;
    initStyleOption(&option);
    return style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
}

ScrollArea::ScrollArea(aCApsWnd& window)
    : owner(window)
{
    setHorizontalScrollBar(new ThriftyBar(Qt::Horizontal)); // both owned by the area
    setVerticalScrollBar(new ThriftyBar(Qt::Vertical));
}

// The thumb has been dragged, or something inside the toolkit has moved a bar.
void ScrollArea::scrollContentsBy(int, int)
{
    if (silent)
        return;
    const auto wanted = [this](ScrollBar which, const QScrollBar* bar) -> long {
        const ScrollMap map(owner.GetScrollRange(which));
        // A bar that has not moved keeps its exact position, which many share on a long range.
        const long now = owner.GetScrollPos(which);
        return bar->value() == map.sliderFor(now) ? now : map.positionFor(bar->value());
    };
    const long horizontal = wanted(HorizontalBar, horizontalScrollBar());
    const long vertical = wanted(VerticalBar, verticalScrollBar());
    barrier([&] { owner.doScroll(horizontal, vertical); });
}

ScrollNative::ScrollNative(aCApsWnd& window)
    : Native(window, std::make_unique<ScrollArea>(window))
    , m_window(window)
{
    for (const ScrollBar which : {HorizontalBar, VerticalBar})
        connect(bar(which), &QAbstractSlider::actionTriggered, this,
                [this, which](int action) { step(which, action); });
    bar(VerticalBar)->installEventFilter(this);
}

QScrollBar* ScrollNative::bar(ScrollBar which) const
{
    return which == VerticalBar ? area()->verticalScrollBar() : area()->horizontalScrollBar();
}

void ScrollNative::applyBar(ScrollBar which)
{
    const aCApsWnd::Bar& state = m_window.m_bars[which];
    const ScrollMap map(state.last);
    QScrollBar* slider = bar(which);
    const auto policy = state.hidden ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded;
    const bool outer = std::exchange(area()->silent, true);
    if (which == VerticalBar)
        area()->setVerticalScrollBarPolicy(policy);
    else
        area()->setHorizontalScrollBarPolicy(policy);
    slider->setSingleStep(static_cast<int>(std::clamp<long>(state.line, 1, ScrollMap::maxSlider)));
    slider->setPageStep(map.sliderPage(state.page));
    slider->setRange(0, map.sliderMax());
    slider->setValue(map.sliderFor(state.position));
    area()->silent = outer;
}

void ScrollNative::applyPosition(ScrollBar which)
{
    const aCApsWnd::Bar& state = m_window.m_bars[which];
    auto* slider = static_cast<ThriftyBar*>(bar(which));
    const bool outer = std::exchange(area()->silent, true);
    slider->place(ScrollMap(state.last).sliderFor(state.position));
    area()->silent = outer;
}

// An arrow and a click beside the thumb move by exact steps, also where one unit of the slider
// stands for many positions.
void ScrollNative::step(ScrollBar which, int action)
{
    const aCApsWnd::Bar& state = m_window.m_bars[which];
    long by = 0;
    switch (action) {
    case QAbstractSlider::SliderSingleStepAdd:
        by = state.line;
        break;
    case QAbstractSlider::SliderSingleStepSub:
        by = -state.line;
        break;
    case QAbstractSlider::SliderPageStepAdd:
        by = state.page;
        break;
    case QAbstractSlider::SliderPageStepSub:
        by = -state.page;
        break;
    default:
        return;
    }
    const QPointer<ScrollNative> alive(this);
    const long horizontal = m_window.m_bars[HorizontalBar].position;
    const long vertical = m_window.m_bars[VerticalBar].position;
    barrier([&] {
        m_window.doScroll(horizontal + (which == HorizontalBar ? by : 0),
                          vertical + (which == VerticalBar ? by : 0));
    });
    if (!alive)
        return;
    const bool outer = std::exchange(area()->silent, true);
    bar(which)->setSliderPosition(ScrollMap(state.last).sliderFor(state.position));
    area()->silent = outer;
}

// The wheel over the vertical bar does what it does over the client area: on a long range the bar's
// own steps would be thousands of positions.
bool ScrollNative::eventFilter(QObject* object, QEvent* event)
{
    if (event->type() != QEvent::Wheel || !widget || object != bar(VerticalBar))
        return Native::eventFilter(object, event);
    bool done = true;
    barrier([&] { done = filterSurface(event); });
    return done;
}

bool ScrollNative::filterSurface(QEvent* event)
{
    const QPointer<ScrollNative> alive(this);
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        const QPoint at = mouse->position().toPoint();
        const bool ends =
            m_window.beforeMouse(at.x(), at.y(), toMouseFlags(mouse->buttons(), mouse->modifiers()),
                                 event->type() != QEvent::MouseMove);
        if (!alive || ends)
            return true;
        break;
    }
    case QEvent::ToolTip:
        if (hint(event))
            return true;
        break;
    case QEvent::Resize: {
        const bool done = Native::filterSurface(event);
        if (alive)
            dispatch<&aCApsWnd::onVisClientSize>(m_window);
        return done || !alive;
    }
    default:
        break;
    }
    return Native::filterSurface(event);
}

bool ScrollNative::filterWidget(QEvent* event)
{
    const bool focus = event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut;
    return !(focus && focusStays) && Native::filterWidget(event);
}

bool ScrollNative::hint(QEvent* event)
{
    const auto* help = static_cast<QHelpEvent*>(event);
    const std::wstring text = m_window.hintAt(help->pos().x(), help->pos().y());
    if (text.empty())
        return false;
    // As plain text, whatever it looks like.
    const QString escaped = toQString(text).toHtmlEscaped();
    QToolTip::showText(help->globalPos(),
                       QStringLiteral("<p style=\"white-space:pre-wrap\">%1</p>").arg(escaped),
                       surface);
    return true;
}

aCApsWnd::aCApsWnd() = default;

aCApsWnd::~aCApsWnd()
{
    destroy();
}

std::unique_ptr<Native> aCApsWnd::makeNative()
{
    auto native = std::make_unique<ScrollNative>(*this);
    QAbstractScrollArea* area = native->area();
    area->setFrameShape((style() & ThinFrame) != 0 ? QFrame::StyledPanel : QFrame::NoFrame);
    area->setFocusPolicy((style() & TabStop) != 0 ? Qt::StrongFocus : Qt::NoFocus);
    area->viewport()->setAttribute(Qt::WA_OpaquePaintEvent, m_opaque);
    m_scroll = native.get();
    for (const ScrollBar bar : {HorizontalBar, VerticalBar})
        m_scroll->applyBar(bar);
    return native;
}

void aCApsWnd::nativeGoes()
{
    m_scroll = nullptr;
    WPanel::nativeGoes();
}

bool aCApsWnd::onDraw(Painter*, const Rect&)
{
    return false;
}

bool aCApsWnd::doPaint(PaintDevice* device)
{
    Painter painter(device);
    return painter.valid() && onDraw(&painter, device->clipRect());
}

void aCApsWnd::doScroll(long horizontal, long vertical)
{
    SetScrollPos(HorizontalBar, horizontal);
    SetScrollPos(VerticalBar, vertical);
    repaint();
}

bool aCApsWnd::onVisClientSize()
{
    return false;
}

void aCApsWnd::applyBar(ScrollBar bar)
{
    if (m_scroll && m_scroll->widget)
        m_scroll->applyBar(bar);
}

void aCApsWnd::SetScrollRange(ScrollBar bar, long last)
{
    Bar& state = m_bars[bar];
    state.last = std::max(last, 0L);
    state.position = std::min(state.position, state.last);
    applyBar(bar);
}

void aCApsWnd::SetScrollPos(ScrollBar bar, long position)
{
    Bar& state = m_bars[bar];
    state.position = std::clamp(position, 0L, state.last);
    if (m_scroll && m_scroll->widget)
        m_scroll->applyPosition(bar);
}

void aCApsWnd::SetScrollSteps(ScrollBar bar, long line, long page)
{
    m_bars[bar].line = std::max(line, 1L);
    m_bars[bar].page = std::max(page, 1L);
    applyBar(bar);
}

void aCApsWnd::ShowScrollBar(ScrollBar bar, bool shown)
{
    m_bars[bar].hidden = !shown;
    applyBar(bar);
}

bool aCApsWnd::IsScrollBarShown(ScrollBar bar) const
{
    return m_scroll && m_scroll->widget && m_bars[bar].last > 0 && !m_bars[bar].hidden;
}

void aCApsWnd::ScrollPixels(const Rect& area, int dx, int dy)
{
    if (m_scroll && m_scroll->surface)
        m_scroll->surface->scroll(dx, dy, toQRect(area));
}

std::wstring aCApsWnd::hintAt(int, int)
{
    return {};
}

bool aCApsWnd::beforeMouse(int, int, long, bool)
{
    return false;
}

} // namespace OviAPI
