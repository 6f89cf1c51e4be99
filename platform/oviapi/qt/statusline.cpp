#include <oviapi/statusline.h>

#include <algorithm>

#include <QHBoxLayout>
#include <QHelpEvent>
#include <QLabel>
#include <QPainter>
#include <QProgressBar>
#include <QTimer>
#include <QToolTip>

#include <oviapi/celldisplay.h>

#include "colormix.h"
#include "convert.h"
#include "dockedbar.h"
#include "plaintext.h"

namespace OviAPI {

namespace {

constexpr int paneMargin = 6;    // px left and right of a text
constexpr int lineMargin = 3;    // px above and below
constexpr int narrowestBar = 60; // px, for the per cent in a progress bar
constexpr int lineShare = 25;    // per cent of the text's colour in that of the lines

QColor lineColor(const QPalette& palette)
{
    return mix(palette.color(QPalette::Window), palette.color(QPalette::WindowText), lineShare,
               100);
}

// A label that cuts its text instead of asking for more room.
class TextPane : public QLabel {
public:
    TextPane()
    {
        setTextFormat(Qt::PlainText);
        setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    }
    QSize sizeHint() const override { return {0, fontMetrics().height() + 2 * lineMargin}; }
    QSize minimumSizeHint() const override { return {0, sizeHint().height()}; }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(inside(), static_cast<int>(alignment()) | Qt::TextSingleLine, cut());
    }
    bool event(QEvent* event) override
    {
        if (event->type() != QEvent::ToolTip)
            return QLabel::event(event);
        if (cut() == text()) {
            event->ignore(); // the line's own may be shown
            return false;
        }
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), plainToolTip(text()),
                           this);
        return true;
    }

private:
    QRect inside() const { return rect().adjusted(paneMargin, 0, -paneMargin, 0); }
    QString cut() const
    {
        return fontMetrics().elidedText(text(), Qt::ElideRight, inside().width());
    }
};

// Draws the lines above and between the panes.
class StatusBox : public QWidget {
public:
    StatusBox()
        : row(new QHBoxLayout(this)) // owned by this widget
    {
        row->setContentsMargins(0, 1, 0, 0);
        row->setSpacing(0);
        row->setSizeConstraint(QLayout::SetNoConstraint);
    }
    QSize sizeHint() const override { return {0, fontMetrics().height() + 2 * lineMargin + 1}; }

    QHBoxLayout* row;

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setPen(QPen(lineColor(palette()), 0));
        painter.drawLine(0, 0, width(), 0);
        for (int i = 0; i < row->count(); ++i) {
            const QWidget* pane = row->itemAt(i)->widget();
            if (pane && !pane->isHidden() && pane->x() > 0)
                painter.drawLine(pane->x(), lineMargin + 1, pane->x(), height() - lineMargin - 1);
        }
    }
};

Qt::Alignment qtAlignment(WStatusLine::Align align)
{
    if (align == WStatusLine::Align::Right)
        return Qt::AlignRight | Qt::AlignVCenter;
    const bool center = align == WStatusLine::Align::Center;
    return Qt::AlignVCenter | (center ? Qt::AlignHCenter : Qt::AlignLeft);
}

} // namespace

struct WStatusLine::StatusNative : public BarNative {
    StatusNative(WStatusLine& status, std::unique_ptr<StatusBox> made)
        : BarNative(status, std::move(made))
        , box(static_cast<StatusBox*>(widget.data()))
        , message(new TextPane) // owned by the box
        , m_status(status)
    {
        message->hide();
        message->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
        box->row->addWidget(message, 1);
        timer.setSingleShot(true);
        QObject::connect(&timer, &QTimer::timeout, this, [this] { m_status.clearMessage(); });
    }

    void add(size_t number)
    {
        const Pane& from = m_status.m_panes[number];
        QWidget* pane = nullptr; // owned by the box
        if (from.isProgress) {
            auto* bar = new QProgressBar;
            bar->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
            pane = bar;
        } else {
            pane = new TextPane;
        }
        panes.push_back(pane);
        box->row->addWidget(pane);
        update(number);
    }

    void update(size_t number)
    {
        const Pane& from = m_status.m_panes[number];
        QWidget* pane = panes[number];
        if (from.width > 0)
            pane->setFixedWidth(from.width);
        else
            pane->setMaximumWidth(QWIDGETSIZE_MAX);
        pane->setMinimumWidth(from.width);
        pane->setSizePolicy(from.width > 0 ? QSizePolicy::Fixed : QSizePolicy::Ignored,
                            pane->sizePolicy().verticalPolicy());
        box->row->setStretchFactor(pane, from.width > 0 ? 0 : 1);
        if (from.isProgress)
            updateProgress(static_cast<QProgressBar&>(*pane), from);
        else
            updateText(static_cast<QLabel&>(*pane), from);
        pane->setVisible(from.isProgress ? from.percent != NoProgress : message->isHidden());
        box->update();
    }

    void showMessage(int milliseconds)
    {
        message->setText(toQString(shownLine(m_status.m_message)));
        message->setVisible(!m_status.m_message.empty());
        for (size_t i = 0; i < panes.size(); ++i)
            update(i);
        timer.stop();
        if (milliseconds > 0 && !m_status.m_message.empty())
            timer.start(milliseconds);
    }

    void clear()
    {
        for (QWidget* pane : panes) {
            box->row->removeWidget(pane);
            delete pane;
        }
        panes.clear();
    }

    StatusBox* box;
    TextPane* message;
    std::vector<QWidget*> panes;
    QTimer timer;

private:
    static void updateText(QLabel& label, const Pane& from)
    {
        const QString text = toQString(shownLine(from.text));
        label.setText(text);
        label.setAlignment(qtAlignment(from.align));
        label.setAccessibleName(from.name.empty() ? text : toQString(from.name) + ": " + text);
    }

    static void updateProgress(QProgressBar& bar, const Pane& from)
    {
        bar.setTextVisible(from.width == 0 || from.width >= narrowestBar);
        bar.setRange(0, from.percent == Busy ? 0 : 100);
        bar.setValue(std::max(0, from.percent));
        bar.setAccessibleName(toQString(from.name));
    }

    WStatusLine& m_status;
};

WStatusLine::WStatusLine() = default;

WStatusLine::~WStatusLine()
{
    destroy(); // it takes itself out of the form
}

WStatusLine::StatusNative* WStatusLine::statusNative() const
{
    return static_cast<StatusNative*>(native());
}

std::unique_ptr<Native> WStatusLine::makeNative()
{
    auto made = std::make_unique<StatusNative>(*this, std::make_unique<StatusBox>());
    for (size_t i = 0; i < m_panes.size(); ++i)
        made->add(i);
    made->showMessage(m_messageTime);
    return made;
}

bool WStatusLine::create()
{
    if (isCreated())
        return true;
    if (!WTypicalControl::create())
        return false;
    statusNative()->dock(BarNative::Lower);
    return true;
}

void WStatusLine::nativeGoes()
{
    statusNative()->undock();
}

void WStatusLine::setParent(Container* parent)
{
    if (parent == this->parent())
        return;
    if (native())
        statusNative()->undock();
    WTypicalControl::setParent(parent);
    if (native())
        statusNative()->dock(BarNative::Lower);
}

bool WStatusLine::doMove(int x, int y, int width, int height)
{
    if (native() && statusNative()->isDocked())
        return false;
    return WTypicalControl::doMove(x, y, width, height);
}

int WStatusLine::append(Pane pane)
{
    pane.width = std::max(0, pane.width);
    m_panes.push_back(std::move(pane));
    if (StatusNative* shown = statusNative())
        shown->add(m_panes.size() - 1);
    return paneCount() - 1;
}

int WStatusLine::addPane(int width, Align align)
{
    Pane pane;
    pane.width = width;
    pane.align = align;
    return append(std::move(pane));
}

int WStatusLine::addProgressPane(int width)
{
    Pane pane;
    pane.width = width;
    pane.isProgress = true;
    return append(std::move(pane));
}

void WStatusLine::clear()
{
    m_panes.clear();
    if (StatusNative* shown = statusNative())
        shown->clear();
}

template<class F>
void WStatusLine::change(int pane, F&& apply)
{
    if (!inRange(pane))
        return;
    const auto number = static_cast<size_t>(pane);
    apply(m_panes[number]);
    if (StatusNative* shown = statusNative())
        shown->update(number);
}

void WStatusLine::setPaneText(int pane, const wchar_t* text)
{
    change(pane, [text](Pane& changed) { changed.text = text ? text : L""; });
}

std::wstring WStatusLine::paneText(int pane) const
{
    return inRange(pane) ? m_panes[static_cast<size_t>(pane)].text : std::wstring();
}

void WStatusLine::setPaneWidth(int pane, int width)
{
    change(pane, [width](Pane& changed) { changed.width = std::max(0, width); });
}

void WStatusLine::setPaneName(int pane, const wchar_t* name)
{
    change(pane, [name](Pane& changed) { changed.name = name ? name : L""; });
}

void WStatusLine::setProgress(int pane, int percent)
{
    change(pane, [percent](Pane& changed) {
        changed.percent = percent < 0 && percent != Busy ? NoProgress : std::min(percent, 100);
    });
}

int WStatusLine::progress(int pane) const
{
    return inRange(pane) ? m_panes[static_cast<size_t>(pane)].percent : NoProgress;
}

void WStatusLine::showMessage(const wchar_t* text, int milliseconds)
{
    m_message = text ? text : L"";
    m_messageTime = std::max(0, milliseconds);
    if (StatusNative* shown = statusNative())
        shown->showMessage(m_messageTime);
}

void WStatusLine::clearMessage()
{
    showMessage(nullptr, 0);
}

int WStatusLine::preferredHeight() const
{
    const StatusNative* shown = statusNative();
    return shown ? shown->box->sizeHint().height() : 0;
}

Rect WStatusLine::paneRect(int pane) const
{
    const StatusNative* shown = statusNative();
    if (!shown || !inRange(pane))
        return {};
    shown->box->row->activate();
    const QWidget* at = shown->panes[static_cast<size_t>(pane)];
    return at->isHidden() ? Rect() : fromQRect(at->geometry());
}

} // namespace OviAPI
