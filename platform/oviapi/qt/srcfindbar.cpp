#include "srcfindbar.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

#include <oviapi/phrases.h>

#include "convert.h"
#include "native.h"
#include "srclayout.h"

namespace OviAPI {

SrcFindBar::SrcFindBar(QWidget* area, CSrcEdit& edit)
    : QWidget(area)
    , m_edit(edit)
    , m_label(new QLabel(this)) // all owned by the bar, as the toolkit's children are
    , m_what(new QLineEdit(this))
    , m_case(new QCheckBox(this))
    , m_word(new QCheckBox(this))
    , m_previous(new QToolButton(this))
    , m_next(new QToolButton(this))
    , m_message(new QLabel(this))
    , m_close(new QToolButton(this))
    , m_replaceRow(new QWidget(this))
    , m_withLabel(new QLabel(m_replaceRow))
    , m_with(new QLineEdit(m_replaceRow))
    , m_replace(new QPushButton(m_replaceRow))
    , m_replaceAll(new QPushButton(m_replaceRow))
{
    m_previous->setArrowType(Qt::UpArrow);
    m_next->setArrowType(Qt::DownArrow);
    m_close->setText(QStringLiteral("\u00D7"));
    m_close->setAutoRaise(true);
    for (QToolButton* button : {m_previous, m_next, m_close})
        button->setFocusPolicy(Qt::TabFocus);
    m_message->setTextFormat(Qt::PlainText);
    m_label->setBuddy(m_what);
    m_withLabel->setBuddy(m_with);
    m_what->setMaximumWidth(320);
    m_with->setMaximumWidth(320);

    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(6, 4, 6, 4);
    rows->setSpacing(3);
    auto* first = new QHBoxLayout;
    rows->addLayout(first);
    for (QWidget* widget : {static_cast<QWidget*>(m_label), static_cast<QWidget*>(m_what),
                            static_cast<QWidget*>(m_previous), static_cast<QWidget*>(m_next),
                            static_cast<QWidget*>(m_case), static_cast<QWidget*>(m_word)})
        first->addWidget(widget);
    first->addWidget(m_message, 1);
    first->addWidget(m_close);
    rows->addWidget(m_replaceRow);
    auto* second = new QHBoxLayout(m_replaceRow);
    second->setContentsMargins(0, 0, 0, 0);
    for (QWidget* widget : {static_cast<QWidget*>(m_withLabel), static_cast<QWidget*>(m_with),
                            static_cast<QWidget*>(m_replace), static_cast<QWidget*>(m_replaceAll)})
        second->addWidget(widget);
    second->addStretch(1);

    connect(m_what, &QLineEdit::textEdited, this, [this] { typed(); });
    connect(m_previous, &QToolButton::clicked, this, [this] { findOn(true); });
    connect(m_next, &QToolButton::clicked, this, [this] { findOn(false); });
    connect(m_close, &QToolButton::clicked, this, [this] { close(); });
    connect(m_replace, &QPushButton::clicked, this, [this] { replaceOne(); });
    connect(m_replaceAll, &QPushButton::clicked, this, [this] { replaceEverywhere(); });
    hide();
}

void SrcFindBar::setTexts()
{
    const bool line = m_mode == Mode::Line;
    m_label->setText(toQString(phrase(line ? Phrase::LineNumber : Phrase::FindWhat)));
    m_withLabel->setText(toQString(phrase(Phrase::ReplaceWith)));
    m_case->setText(toQString(phrase(Phrase::MatchCase)));
    m_word->setText(toQString(phrase(Phrase::WholeWord)));
    m_replace->setText(toQString(phrase(Phrase::Replace)));
    m_replaceAll->setText(toQString(phrase(Phrase::ReplaceAll)));
    m_what->setAccessibleName(m_label->text());
    m_with->setAccessibleName(m_withLabel->text());
    const auto name = [](QToolButton* button, Phrase text) {
        button->setAccessibleName(toQString(phrase(text)));
        button->setToolTip(toQString(phrase(text)));
    };
    name(m_previous, Phrase::FindPrevious);
    name(m_next, Phrase::FindNext);
    name(m_close, Phrase::CloseBar);
    const int width = std::max(m_label->sizeHint().width(), m_withLabel->sizeHint().width());
    m_withLabel->setMinimumWidth(m_mode == Mode::Replace ? width : 0);
    m_label->setMinimumWidth(m_mode == Mode::Replace ? width : 0);
}

void SrcFindBar::open(Mode mode)
{
    m_mode = mode;
    setTexts();
    const bool line = mode == Mode::Line;
    for (QWidget* widget : {static_cast<QWidget*>(m_case), static_cast<QWidget*>(m_word),
                            static_cast<QWidget*>(m_previous), static_cast<QWidget*>(m_next)})
        widget->setVisible(!line);
    m_replaceRow->setVisible(mode == Mode::Replace && !m_edit.isReadOnly());
    const std::wstring selected = m_edit.selectedText();
    if (line)
        m_what->setText(QString::number(m_edit.caret().line));
    else if (!selected.empty() && selected.find(L'\n') == std::wstring::npos &&
             selected.size() < 1000)
        m_what->setText(toQString(selected));
    tell({}, false);
    m_what->selectAll();
    m_what->setFocus(Qt::ShortcutFocusReason);
}

void SrcFindBar::close()
{
    barrier([&] { m_edit.hideFindBar(); });
}

int SrcFindBar::flags() const
{
    return FindWrap | (m_case->isChecked() ? FindMatchCase : 0) |
           (m_word->isChecked() ? FindWholeWord : 0);
}

void SrcFindBar::tell(const QString& message, bool bad)
{
    QPalette palette;
    if (bad)
        palette.setColor(QPalette::WindowText,
                         readable(QColor(200, 0, 0), palette.color(QPalette::Window),
                                  palette.color(QPalette::Window)));
    m_message->setPalette(palette);
    m_message->setText(message);
    m_message->setAccessibleName(message);
}

void SrcFindBar::find(int how)
{
    const std::wstring what = fromQString(m_what->text());
    if (what.empty())
        return tell({}, false);
    const std::weak_ptr<const void> alive = m_edit.life();
    barrier([&] {
        const SrcRange before = m_edit.selection();
        const bool found = m_edit.find(what.c_str(), how);
        if (alive.expired())
            return;
        const SrcRange now = m_edit.selection();
        const auto behind = [](SrcPosition a, SrcPosition b) {
            return a.line > b.line || (a.line == b.line && a.column > b.column);
        };
        const bool wrapped =
            how & FindBackward ? !behind(before.from, now.from) : !behind(now.to, before.to);
        if (!found)
            tell(toQString(phrase(Phrase::NotFound)), true);
        else
            tell(wrapped ? toQString(phrase(Phrase::Wrapped)) : QString(), false);
    });
}

bool SrcFindBar::findOn(bool backward)
{
    if (m_what->text().isEmpty() || m_mode == Mode::Line)
        return false;
    find(flags() | (backward ? FindBackward : 0));
    return true;
}

// Looks on from the start of the place that is selected, so that more letters narrow it down.
void SrcFindBar::typed()
{
    if (m_mode == Mode::Line)
        return;
    const std::weak_ptr<const void> alive = m_edit.life();
    barrier([&] {
        if (!m_edit.selection().isEmpty())
            m_edit.setCaret(m_edit.selection().from);
    });
    if (alive.expired())
        return;
    find(flags());
    if (!alive.expired() && m_message->text() == toQString(phrase(Phrase::Wrapped)))
        tell({}, false);
}

void SrcFindBar::replaceOne()
{
    if (m_edit.isReadOnly())
        return;
    const std::weak_ptr<const void> alive = m_edit.life();
    barrier([&] {
        m_edit.replaceFound(fromQString(m_what->text()).c_str(),
                            fromQString(m_with->text()).c_str(), flags());
    });
    if (!alive.expired())
        tell({}, false);
}

void SrcFindBar::replaceEverywhere()
{
    if (m_edit.isReadOnly())
        return;
    const std::weak_ptr<const void> alive = m_edit.life();
    int count = 0;
    barrier([&] {
        count = m_edit.replaceAll(fromQString(m_what->text()).c_str(),
                                  fromQString(m_with->text()).c_str(), flags());
    });
    if (alive.expired())
        return;
    if (count == 0)
        tell(toQString(phrase(Phrase::NotFound)), true);
    else
        tell(toQString(phrase(Phrase::Replaced, std::to_wstring(count))), false);
}

void SrcFindBar::keyPressEvent(QKeyEvent* event)
{
    event->accept();
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    switch (event->key()) {
    case Qt::Key_Escape:
        close();
        break;
    case Qt::Key_F3:
        findOn(shift);
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (m_mode == Mode::Line) {
            const std::weak_ptr<const void> alive = m_edit.life();
            barrier([&] { m_edit.goToLine(m_what->text().toInt()); });
            if (!alive.expired())
                close();
        } else if (m_with->hasFocus()) {
            replaceOne();
        } else {
            findOn(shift);
        }
        break;
    default:
        break;
    }
}

void SrcFindBar::keyReleaseEvent(QKeyEvent* event)
{
    event->accept();
}

void SrcFindBar::mousePressEvent(QMouseEvent* event)
{
    event->accept();
}

void SrcFindBar::wheelEvent(QWheelEvent* event)
{
    event->accept();
}

void SrcFindBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Window));
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawLine(0, 0, width(), 0);
}

} // namespace OviAPI
