#include <oviapi/tabcontrol.h>

#include <algorithm>

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QPointer>
#include <QSignalBlocker>
#include <QStyleOptionTabWidgetFrame>
#include <QTabBar>

#include <oviapi/celldisplay.h>

#include "afterevent.h"
#include "convert.h"
#include "native.h"
#include "plaintext.h"

namespace OviAPI {

namespace {

constexpr int widestTab = 300; // px; longer captions are cut
constexpr int frame = 3;       // px between the edge of the pages' frame and the client area

// Gives the focus to the first control on a page that takes it.
void focusFirst(QWidget* page)
{
    if (!page)
        return;
    for (QWidget* next = page->nextInFocusChain(); next != page; next = next->nextInFocusChain()) {
        const bool takes = (next->focusPolicy() & Qt::TabFocus) && next->isEnabled();
        if (takes && page->isAncestorOf(next) && next->isVisibleTo(page)) {
            next->setFocus(Qt::OtherFocusReason);
            return;
        }
    }
}

class Bar : public QTabBar {
public:
    explicit Bar(QWidget* parent)
        : QTabBar(parent)
    {
        setElideMode(Qt::ElideRight);
        setUsesScrollButtons(true);
        setDrawBase(false);
        setFocusPolicy(Qt::TabFocus);
        setExpanding(false);
    }
    bool isCut(int tab) const { return QTabBar::tabSizeHint(tab).width() > widestTab; }

    AfterEvent after;

protected:
    bool event(QEvent* event) override
    {
        const AfterEvent::Scope scope(after, this);
        return QTabBar::event(event);
    }
    QSize tabSizeHint(int tab) const override
    {
        QSize size = QTabBar::tabSizeHint(tab);
        size.setWidth(std::min(size.width(), widestTab));
        return size;
    }
    QSize minimumTabSizeHint(int tab) const override { return tabSizeHint(tab); }
};

// The frame around the pages, which the current tab opens towards its caption.
class Box : public QWidget {
public:
    explicit Box(bool below)
        : bar(new Bar(this))
        , atBottom(below)
    {
        bar->setShape(below ? QTabBar::RoundedSouth : QTabBar::RoundedNorth);
        setFocusProxy(bar);
    }

    // The part for frame and pages.
    QRect pane() const
    {
        const int bars = bar->height() - style()->pixelMetric(QStyle::PM_TabBarBaseOverlap);
        return atBottom ? rect().adjusted(0, 0, 0, -bars) : rect().adjusted(0, bars, 0, 0);
    }
    void layOut(QWidget* pages)
    {
        const QSize wanted = bar->sizeHint();
        const int height = std::max(wanted.height(), bar->minimumSizeHint().height());
        bar->setGeometry(0, atBottom ? this->height() - height : 0,
                         std::min(wanted.width(), width()), height);
        pages->setGeometry(pane().adjusted(frame, frame, -frame, -frame));
        update();
    }

    Bar* bar; // owned by this widget
    const bool atBottom;

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        QStyleOptionTabWidgetFrame option;
        option.initFrom(this);
        option.lineWidth = style()->pixelMetric(QStyle::PM_DefaultFrameWidth, nullptr, this);
        option.shape = bar->shape();
        option.rect = pane();
        option.tabBarSize = bar->size();
        option.tabBarRect = bar->geometry();
        option.selectedTabRect = bar->tabRect(bar->currentIndex()).translated(bar->pos());
        style()->drawPrimitive(QStyle::PE_FrameTabWidget, &option, &painter, this);
    }
};

} // namespace

struct WTabControl::TabNative : public Native {
    TabNative(WTabControl& tabs, std::unique_ptr<Box> made)
        : Native(tabs, std::move(made), new QWidget)
        , box(static_cast<Box*>(widget.data()))
        , bar(box->bar)
        , m_tabs(tabs)
    {
        surface->setParent(box); // owned by the widget
        bar->installEventFilter(this);
        QObject::connect(bar, &QTabBar::currentChanged, this, [this](int tab) {
            bar->after.run(this, [this, tab] { m_tabs.userChose(tab); });
        });
        QObject::connect(bar, &QTabBar::tabCloseRequested, this, [this](int tab) {
            bar->after.run(this, [this, tab] { m_tabs.userCloses(tab); });
        });
    }

    void layOut() override { box->layOut(surface); }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (object != bar)
            return Native::eventFilter(object, event);
        switch (event->type()) {
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
            m_keySeen = nullptr;
            if (Native::eventFilter(widget, event)) // it is the control's
                return true;
            m_keySeen = event;
            return false;
        case QEvent::FocusIn:
        case QEvent::FocusOut:
            return Native::eventFilter(widget, event);
        case QEvent::LayoutRequest:
            layOut();
            return false;
        default:
            return false;
        }
    }

    bool filterWidget(QEvent* event) override
    {
        const QPointer<Native> alive(this);
        switch (event->type()) {
        case QEvent::KeyPress:
        case QEvent::KeyRelease: // what the tabs leave comes here a second time
            return std::exchange(m_keySeen, nullptr) != event && Native::filterWidget(event);
        case QEvent::Resize:
        case QEvent::FontChange:
        case QEvent::StyleChange:
        case QEvent::LayoutRequest:
            layOut();
            m_tabs.placePages();
            return !alive || Native::filterWidget(event);
        default:
            return Native::filterWidget(event);
        }
    }

    bool unhandledKey(QKeyEvent* event) override
    {
        const bool shift = event->modifiers() & Qt::ShiftModifier;
        if (!(event->modifiers() & Qt::ControlModifier))
            return bar->hasFocus() && firstOrLast(event->key());
        switch (event->key()) {
        case Qt::Key_Tab:
            return m_tabs.userSteps(shift ? -1 : 1);
        case Qt::Key_Backtab:
        case Qt::Key_PageUp:
            return m_tabs.userSteps(-1);
        case Qt::Key_PageDown:
            return m_tabs.userSteps(1);
        case Qt::Key_F4:
        case Qt::Key_W:
            if (!bar->tabsClosable() || m_tabs.currentTab() < 0)
                return false;
            m_tabs.userCloses(m_tabs.currentTab());
            return true;
        default:
            return false;
        }
    }

    // From the client area to the tabs.
    QPoint barOffset() const { return bar->pos() - surface->pos(); }

    Box* box;
    Bar* bar;

private:
    bool firstOrLast(int key)
    {
        if (key != Qt::Key_Home && key != Qt::Key_End)
            return false;
        const int step = key == Qt::Key_Home ? 1 : -1;
        int tab = step > 0 ? 0 : m_tabs.tabCount() - 1;
        while (m_tabs.inRange(tab) && !m_tabs.isTabEnabled(tab))
            tab += step;
        if (m_tabs.inRange(tab))
            m_tabs.userChose(tab);
        return true;
    }

    WTabControl& m_tabs;
    const QEvent* m_keySeen = nullptr;
};

WTabControl::WTabControl() = default;

WTabControl::~WTabControl()
{
    destroy(); // it asks for the tabs
    m_tabs.clear();
}

bool WTabControl::onTabChanging(int, int)
{
    return false;
}
bool WTabControl::onTabChanged(int)
{
    return false;
}
bool WTabControl::onTabClose(int)
{
    return false;
}

WTabControl::TabNative* WTabControl::tabNative() const
{
    return static_cast<TabNative*>(native());
}

std::unique_ptr<Native> WTabControl::makeNative()
{
    auto made = std::make_unique<TabNative>(*this, std::make_unique<Box>((style() & Bottom) != 0));
    const QSignalBlocker quiet(made->bar);
    made->bar->setTabsClosable((style() & CloseBoxes) != 0);
    for (int i = 0; i < tabCount(); ++i) {
        made->bar->addTab(QString());
        applyTo(*made, i);
    }
    made->bar->setCurrentIndex(m_current);
    return made;
}

void WTabControl::applyTab(int tab)
{
    if (TabNative* shown = tabNative()) {
        const QSignalBlocker quiet(shown->bar);
        applyTo(*shown, tab);
        shown->bar->setCurrentIndex(m_current); // the toolkit leaves a tab that is disabled
        shown->layOut();
    }
}

void WTabControl::applyTo(TabNative& shown, int tab) const
{
    const Tab& from = m_tabs[static_cast<size_t>(tab)];
    Bar* bar = shown.bar;
    const QString caption = toQString(shownLine(from.caption));
    bar->setTabText(tab, caption);
    bar->setAccessibleTabName(tab, withoutMnemonic(caption));
    bar->setTabIcon(tab, toQIcon(from.picture));
    if (!from.picture.isNull())
        bar->setIconSize(toQSize(from.picture.size()));
    bar->setTabEnabled(tab, from.enabled);
    QString hint = toQString(from.toolTip);
    if (hint.isEmpty() && bar->isCut(tab))
        hint = withoutMnemonic(caption);
    bar->setTabToolTip(tab, plainToolTip(hint));
    for (const auto side : {QTabBar::LeftSide, QTabBar::RightSide}) {
        if (QWidget* close = bar->tabButton(tab, side)) {
            close->setToolTip(QString()); // the toolkit's is English
            close->setAccessibleName(QString(QChar(0xD7)) + ' ' + withoutMnemonic(caption));
        }
    }
}

int WTabControl::insertTab(const wchar_t* caption, WVisualObject* page, const Picture* picture,
                           int before)
{
    const int tab = inRange(before) ? before : tabCount();
    Tab made;
    made.caption = caption ? caption : L"";
    if (picture)
        made.picture = *picture;
    if (page && findPage(page) < 0) {
        made.page = page;
        made.pageLife = page->life();
    }
    m_tabs.insert(m_tabs.begin() + tab, std::move(made));
    if (m_current >= tab)
        ++m_current;
    if (TabNative* shown = tabNative()) {
        const QSignalBlocker quiet(shown->bar);
        shown->bar->insertTab(tab, QString());
    }
    if (m_current < 0)
        m_current = 0;
    applyTab(tab);
    if (page && this->page(tab) == page)
        page->setParent(this);
    placePages();
    return tab;
}

void WTabControl::removeTab(int tab)
{
    if (!inRange(tab))
        return;
    WVisualObject* gone = page(tab);
    m_tabs.erase(m_tabs.begin() + tab);
    if (m_current > tab || m_current == tabCount())
        --m_current;
    if (TabNative* shown = tabNative()) {
        const QSignalBlocker quiet(shown->bar);
        shown->bar->removeTab(tab);
        shown->bar->setCurrentIndex(m_current);
        shown->layOut();
    }
    const std::weak_ptr<const void> alive = life();
    if (gone && gone->parent() == this) {
        const std::weak_ptr<const void> goneLife = gone->life();
        gone->show(false);
        if (!goneLife.expired())
            gone->setParent(nullptr);
    }
    if (!alive.expired())
        placePages();
}

void WTabControl::clear()
{
    const std::weak_ptr<const void> alive = life();
    while (!alive.expired() && tabCount() > 0)
        removeTab(tabCount() - 1);
}

void WTabControl::moveTab(int tab, int to)
{
    if (!inRange(tab) || !inRange(to) || tab == to)
        return;
    const auto first = m_tabs.begin() + std::min(tab, to);
    const auto last = m_tabs.begin() + std::max(tab, to) + 1;
    std::rotate(first, tab < to ? first + 1 : last - 1, last);
    if (m_current == tab)
        m_current = to;
    else if (tab < m_current && m_current <= to)
        --m_current;
    else if (to <= m_current && m_current < tab)
        ++m_current;
    if (TabNative* shown = tabNative()) {
        const QSignalBlocker quiet(shown->bar);
        shown->bar->moveTab(tab, to);
        shown->bar->setCurrentIndex(m_current);
        shown->layOut();
    }
}

std::wstring WTabControl::caption(int tab) const
{
    return inRange(tab) ? m_tabs[static_cast<size_t>(tab)].caption : std::wstring();
}

void WTabControl::setCaption(int tab, const wchar_t* caption)
{
    if (!inRange(tab))
        return;
    m_tabs[static_cast<size_t>(tab)].caption = caption ? caption : L"";
    applyTab(tab);
}

void WTabControl::setPicture(int tab, const Picture* picture)
{
    if (!inRange(tab))
        return;
    m_tabs[static_cast<size_t>(tab)].picture = picture ? *picture : Picture();
    applyTab(tab);
}

WVisualObject* WTabControl::page(int tab) const
{
    if (!inRange(tab))
        return nullptr;
    const Tab& from = m_tabs[static_cast<size_t>(tab)];
    return from.pageLife.expired() ? nullptr : from.page;
}

int WTabControl::findPage(const WVisualObject* wanted) const
{
    for (int i = 0; i < tabCount(); ++i) {
        if (wanted && page(i) == wanted)
            return i;
    }
    return -1;
}

void WTabControl::enableTab(int tab, bool enabled)
{
    if (!inRange(tab))
        return;
    m_tabs[static_cast<size_t>(tab)].enabled = enabled;
    applyTab(tab);
}

bool WTabControl::isTabEnabled(int tab) const
{
    return inRange(tab) && m_tabs[static_cast<size_t>(tab)].enabled;
}

void WTabControl::setTabToolTip(int tab, const wchar_t* text)
{
    if (!inRange(tab))
        return;
    m_tabs[static_cast<size_t>(tab)].toolTip = text ? text : L"";
    applyTab(tab);
}

void WTabControl::setCurrentTab(int tab)
{
    if (inRange(tab))
        becomeCurrent(tab);
}

void WTabControl::becomeCurrent(int tab)
{
    m_current = tab;
    TabNative* shown = tabNative();
    if (!shown) {
        placePages();
        return;
    }
    {
        const QSignalBlocker quiet(shown->bar);
        shown->bar->setCurrentIndex(tab);
    }
    shown->box->update();
    const QPointer<Native> alive(shown);
    // The focus stays inside when its page goes.
    const QWidget* focused = QApplication::focusWidget();
    const bool inPage = focused && shown->surface->isAncestorOf(focused);
    if (inPage)
        shown->bar->setFocus(Qt::OtherFocusReason);
    if (alive)
        placePages();
    if (alive && inPage && shown->bar->hasFocus())
        focusFirst(widgetOf(currentPage()));
}

int WTabControl::tabAt(int x, int y) const
{
    const TabNative* shown = tabNative();
    return shown ? shown->bar->tabAt(QPoint(x, y) - shown->barOffset()) : -1;
}

Rect WTabControl::tabRect(int tab) const
{
    const TabNative* shown = tabNative();
    if (!shown || !inRange(tab))
        return {};
    return fromQRect(shown->bar->tabRect(tab).translated(shown->barOffset()));
}

void WTabControl::childrenChanged()
{
    placePages();
}

// A page in front of the others fills the client area; the rest is hidden. Handlers of pages may
// change or destroy the control.
void WTabControl::placePages()
{
    if (m_placing || !native())
        return;
    const std::weak_ptr<const void> alive = life();
    m_placing = true;
    for (const int pass : {0, 1}) { // the old page goes before the new one comes
        for (int i = 0; !alive.expired() && i < tabCount(); ++i) {
            WVisualObject* shown = page(i);
            if (!shown || shown->parent() != this || (i == m_current) != (pass == 1))
                continue;
            if (i == m_current) {
                const Size size = clientSize();
                shown->move(0, 0, size.width, size.height);
            }
            if (!alive.expired() && page(i) == shown)
                shown->show(i == m_current);
        }
    }
    if (!alive.expired())
        m_placing = false;
}

// The toolkit shows the tab already.
void WTabControl::userChose(int tab)
{
    if (tab == m_current || !inRange(tab))
        return;
    const std::weak_ptr<const void> alive = life();
    const int before = m_current;
    const auto asked = dispatch<&WTabControl::onTabChanging>(*this, before, tab);
    if (alive.expired())
        return;
    const bool refused = asked.bySlot || asked.value || !inRange(tab);
    if (refused || m_current != before) { // or the handler has chosen another one
        becomeCurrent(m_current);
        return;
    }
    becomeCurrent(tab);
    if (!alive.expired() && m_current == tab)
        dispatch<&WTabControl::onTabChanged>(*this, tab);
}

void WTabControl::userCloses(int tab)
{
    if (inRange(tab))
        dispatch<&WTabControl::onTabClose>(*this, tab);
}

// To the next tab that is enabled, around the end. True when there is more than one.
bool WTabControl::userSteps(int step)
{
    const int count = tabCount();
    int tab = m_current;
    for (int i = 0; i < count; ++i) {
        tab = (tab + step + count) % count;
        if (tab != m_current && isTabEnabled(tab)) {
            userChose(tab);
            return true;
        }
    }
    return false;
}

} // namespace OviAPI
