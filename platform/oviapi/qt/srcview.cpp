#include "srcview.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include <QApplication>
#include <QClipboard>
#include <QFontDatabase>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QScrollBar>
#include <QStyleHints>
#include <QToolTip>

#include <oviapi/phrases.h>

#include "convert.h"
#include "plaintext.h"
#include "srcaccessible.h"
#include "srcfindbar.h"

namespace OviAPI {

namespace {

constexpr int scrollInterval = 40;    // ms, while the mouse drags outside
constexpr int longestMatched = 65536; // characters of a line whose tokens are asked for on a move

} // namespace

SrcArea::SrcArea()
{
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_InputMethodEnabled);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    viewport()->setCursor(Qt::IBeamCursor);
    setFrameShape(QFrame::StyledPanel);
}

QVariant SrcArea::inputMethodQuery(Qt::InputMethodQuery query) const
{
    if (!m_view)
        return {};
    const SrcCursor& cursor = m_view->state.cursor;
    switch (query) {
    case Qt::ImEnabled:
        return !m_view->state.readOnly;
    case Qt::ImCursorRectangle:
        return m_view->caretRect().translated(viewport()->pos());
    case Qt::ImFont:
        return m_view->layout.font();
    case Qt::ImHints:
        return static_cast<int>(Qt::ImhMultiLine | Qt::ImhNoAutoUppercase);
    default:
        break;
    }
    // A piece of the line around the caret: input methods expect a paragraph.
    constexpr int around = 512;
    const std::wstring& line = m_view->state.text.line(cursor.caret().line);
    const int from = std::max(0, cursor.caret().column - around);
    const auto unit = [&](int column) {
        const int end = std::clamp(column, from, from + 2 * around);
        return static_cast<int>(
            toQString(std::wstring_view(line).substr(static_cast<size_t>(from),
                                                     static_cast<size_t>(end - from)))
                .size());
    };
    switch (query) {
    case Qt::ImSurroundingText:
        return toQString(
            std::wstring_view(line).substr(static_cast<size_t>(from), size_t{2} * around));
    case Qt::ImCursorPosition:
        return unit(cursor.caret().column);
    case Qt::ImAnchorPosition:
        return unit(cursor.anchor().line == cursor.caret().line ? cursor.anchor().column
                                                                : cursor.caret().column);
    case Qt::ImCurrentSelection:
        return toQString(m_view->state.text.text(cursor.selection()));
    default:
        return QAbstractScrollArea::inputMethodQuery(query);
    }
}

bool SrcArea::event(QEvent* event)
{
    // A shortcut of a menu does not take the editor's own keys away.
    if (event->type() == QEvent::ShortcutOverride && m_view &&
        m_view->isCommand(*static_cast<QKeyEvent*>(event))) {
        event->accept();
        return true;
    }
    return QAbstractScrollArea::event(event);
}

bool SrcArea::viewportEvent(QEvent* event)
{
    if (event->type() != QEvent::ToolTip || !m_view)
        return QAbstractScrollArea::viewportEvent(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    const QString hint = m_view->hint(help->pos());
    if (hint.isEmpty())
        return QAbstractScrollArea::viewportEvent(event);
    QToolTip::showText(help->globalPos(), hint, viewport());
    return true;
}

void SrcArea::paintEvent(QPaintEvent* event)
{
    if (m_view)
        m_view->paint(event);
}

void SrcArea::resizeEvent(QResizeEvent*)
{
    if (m_view) {
        m_view->placeBar();
        m_view->updateBars();
    }
}

void SrcArea::mousePressEvent(QMouseEvent* event)
{
    if (m_view && event->button() == Qt::LeftButton)
        m_view->press(event);
}

void SrcArea::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_view)
        return;
    if (event->buttons() & Qt::LeftButton)
        m_view->dragTo(event->position().toPoint());
    else
        viewport()->setCursor(event->position().x() < m_view->marginWidth ? Qt::ArrowCursor
                                                                          : Qt::IBeamCursor);
}

void SrcArea::mouseReleaseEvent(QMouseEvent* event)
{
    if (m_view && event->button() == Qt::LeftButton)
        m_view->release();
}

void SrcArea::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (m_view && event->button() == Qt::LeftButton)
        m_view->doubleClick(event);
}

void SrcArea::wheelEvent(QWheelEvent* event)
{
    if (m_view && (event->modifiers() & Qt::ControlModifier)) {
        CSrcEdit& edit = m_view->edit;
        const int delta = event->angleDelta().y();
        barrier([&] { edit.setZoom(edit.zoom() + (delta > 0) - (delta < 0)); });
        event->accept();
        return;
    }
    QAbstractScrollArea::wheelEvent(event);
}

void SrcArea::contextMenuEvent(QContextMenuEvent* event)
{
    if (m_view)
        m_view->openMenu(event->reason() == QContextMenuEvent::Mouse
                             ? event->globalPos()
                             : viewport()->mapToGlobal(m_view->caretRect().bottomLeft()));
}

void SrcArea::inputMethodEvent(QInputMethodEvent* event)
{
    if (m_view)
        m_view->compose(event);
    event->accept();
}

void SrcArea::focusInEvent(QFocusEvent* event)
{
    QAbstractScrollArea::focusInEvent(event);
    if (m_view)
        m_view->focusMoved(true);
}

void SrcArea::focusOutEvent(QFocusEvent* event)
{
    QAbstractScrollArea::focusOutEvent(event);
    if (m_view)
        m_view->focusMoved(false);
}

void SrcArea::timerEvent(QTimerEvent* event)
{
    if (m_view)
        m_view->tick(event->timerId());
}

void SrcArea::changeEvent(QEvent* event)
{
    QAbstractScrollArea::changeEvent(event);
    const bool font = event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange;
    if (m_view && font)
        m_view->fontChanged();
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::EnabledChange)
        viewport()->update();
}

void SrcArea::scrollContentsBy(int, int)
{
    if (m_view)
        m_view->updateBars();
    viewport()->update();
}

CSrcEdit::SrcNative::SrcNative(CSrcEdit& owning, std::unique_ptr<SrcArea> made)
    : Native(owning, std::move(made))
    , edit(owning)
    , area(static_cast<SrcArea*>(widget.data()))
    , state(*owning.m_state)
    , bar(new SrcFindBar(area, owning)) // owned by the area
{
    area->setView(this);
    fontChanged();
}

CSrcEdit::SrcNative::~SrcNative()
{
    if (widget)
        area->setView(nullptr);
}

void CSrcEdit::SrcNative::fontChanged()
{
    QFont font = area->font();
    if (!state.ownFont) {
        const double size = font.pointSizeF();
        font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
        if (size > 0)
            font.setPointSizeF(size);
    }
    if (font.pointSizeF() > 0)
        font.setPointSizeF(std::max(4.0, font.pointSizeF() + state.zoom));
    layout.setFont(font, state.tabWidth);
    m_widest = 0;
    m_wantedX = -1;
    updateBars();
    surface->update();
}

int CSrcEdit::SrcNative::pageLines() const
{
    return std::max(1, surface->height() / layout.lineHeight());
}

int CSrcEdit::SrcNative::textLeft() const
{
    return marginWidth + srcGap - area->horizontalScrollBar()->value();
}

void CSrcEdit::SrcNative::updateBars()
{
    int digits = 3;
    for (int lines = state.text.lineCount(); lines >= 1000; lines /= 10)
        ++digits;
    // The mark of an error stands on the left of the numbers.
    marginWidth = static_cast<int>(std::ceil(layout.digitWidth() * digits)) + 2 * srcGap +
                  layout.lineHeight() / 2;
    const int page = pageLines();
    QScrollBar* vertical = area->verticalScrollBar();
    const int last = std::max(0, state.text.lineCount() - page);
    vertical->setPageStep(page);
    vertical->setSingleStep(1);
    if (vertical->maximum() != last)
        vertical->setRange(0, last);
    const int first = vertical->value();
    const int end = std::min(first + page + 1, state.text.lineCount());
    for (int i = first; i < end; ++i)
        m_widest = std::max(m_widest, layout.width(state.text.line(i)));
    QScrollBar* horizontal = area->horizontalScrollBar();
    const int room = std::max(1, surface->width() - marginWidth - 2 * srcGap);
    const double beyond = std::min(m_widest - room, 1e9);
    const int lastX = std::max(0, static_cast<int>(std::ceil(beyond)));
    horizontal->setPageStep(room);
    horizontal->setSingleStep(std::max(1, static_cast<int>(layout.digitWidth()) * 4));
    if (horizontal->maximum() != lastX)
        horizontal->setRange(0, lastX);
}

void CSrcEdit::SrcNative::textReplaced()
{
    m_widest = 0;
    m_wantedX = -1;
    area->verticalScrollBar()->setValue(0);
    area->horizontalScrollBar()->setValue(0);
}

void CSrcEdit::SrcNative::openBar(SrcFindBar::Mode mode)
{
    const QPointer<Native> alive(this);
    bar->show();
    bar->open(mode); // moves the focus, which runs handlers
    if (!alive)
        return;
    placeBar();
    showCaret(false);
}

void CSrcEdit::SrcNative::placeBar()
{
    const bool shown = bar->isVisibleTo(area);
    const int frame = area->frameWidth();
    const int height = shown ? bar->sizeHint().height() : 0;
    bar->setGeometry(frame, area->height() - frame - height, area->width() - 2 * frame, height);
    area->setViewportMargins(0, 0, 0, height);
}

QRect CSrcEdit::SrcNative::rectOf(SrcPoint point)
{
    const double x = layout.xOf(state.text.line(point.line), point.column);
    const int top = (point.line - area->verticalScrollBar()->value()) * layout.lineHeight();
    return {textLeft() + static_cast<int>(std::lround(std::min(x, 1e9))), top, 1,
            layout.lineHeight()};
}

QRect CSrcEdit::SrcNative::caretRect()
{
    return rectOf(state.cursor.caret());
}

SrcPoint CSrcEdit::SrcNative::pointAt(QPoint place)
{
    const double row = std::floor(static_cast<double>(place.y()) / layout.lineHeight());
    const int line = area->verticalScrollBar()->value() + static_cast<int>(row);
    if (line < 0)
        return {0, 0};
    if (line >= state.text.lineCount())
        return state.text.end();
    return {line, layout.columnAt(state.text.line(line), place.x() - textLeft())};
}

void CSrcEdit::SrcNative::showCaret(bool centered)
{
    QScrollBar* vertical = area->verticalScrollBar();
    const int line = state.cursor.caret().line;
    const int page = pageLines();
    if (centered)
        vertical->setValue(line - page / 2);
    else if (line < vertical->value())
        vertical->setValue(line);
    else if (line >= vertical->value() + page)
        vertical->setValue(line - page + 1);
    updateBars();
    QScrollBar* horizontal = area->horizontalScrollBar();
    const int x = caretRect().x();
    const int right = surface->width() - srcGap;
    const int step = std::max(1, (right - marginWidth) / 4);
    if (x < marginWidth + srcGap)
        horizontal->setValue(horizontal->value() - (marginWidth + srcGap - x) - step);
    else if (x > right)
        horizontal->setValue(horizontal->value() + x - right + step);
}

void CSrcEdit::SrcNative::refresh(bool textChanged, bool caretToBeSeen)
{
    if (textChanged)
        updateBars();
    if (caretToBeSeen)
        showCaret(false);
    m_brackets.reset();
    if (state.text.length(state.cursor.caret().line) <= longestMatched)
        m_brackets = state.cursor.brackets();
    blinkAnew();
    surface->update();
    tellChange(textChanged);
}

void CSrcEdit::SrcNative::tellChange(bool textChanged)
{
    QGuiApplication::inputMethod()->update(Qt::ImQueryInput);
    if (!QAccessible::isActive())
        return;
    if (textChanged) {
        QAccessibleEvent changed(area, QAccessible::TextUpdated);
        QAccessible::updateAccessibility(&changed);
    }
    QAccessibleTextCursorEvent moved(area,
                                     static_cast<int>(state.text.offset(state.cursor.caret())));
    QAccessible::updateAccessibility(&moved);
}

void CSrcEdit::SrcNative::blinkAnew()
{
    m_caretShown = true;
    const int time = QGuiApplication::styleHints()->cursorFlashTime();
    if (area->hasFocus() && time > 1)
        m_blink.start(time / 2, area);
    else
        m_blink.stop();
}

void CSrcEdit::SrcNative::focusMoved(bool)
{
    state.text.breakTyping();
    blinkAnew();
    surface->update();
}

void CSrcEdit::SrcNative::tick(int timer)
{
    if (timer == m_blink.timerId()) {
        m_caretShown = !m_caretShown;
        surface->update(caretRect().adjusted(-2, 0, layout.lineHeight(), 0));
    } else if (timer == m_autoScroll.timerId()) {
        dragTo(m_dragPlace);
    }
}

QString CSrcEdit::SrcNative::hint(QPoint place)
{
    if (!state.hasError || state.errorMessage.empty())
        return {};
    const int line = area->verticalScrollBar()->value() + place.y() / layout.lineHeight();
    if (line != state.error.line)
        return {};
    return plainToolTip(toQString(state.errorMessage));
}

void CSrcEdit::SrcNative::press(QMouseEvent* event)
{
    const QPoint place = event->position().toPoint();
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    const bool third = m_sinceDouble.isValid() &&
                       m_sinceDouble.elapsed() < QApplication::doubleClickInterval() &&
                       (place - m_dragPlace).manhattanLength() < QApplication::startDragDistance();
    m_sinceDouble.invalidate();
    m_wantedX = -1;
    m_dragging = true;
    m_draggingLines = third || place.x() < marginWidth;
    const SrcPoint point = pointAt(place);
    act([&] {
        if (m_draggingLines && !shift)
            state.cursor.select({{point.line, 0}, state.text.clamped({point.line + 1, 0})});
        else
            state.cursor.setCaret(point, shift);
    });
}

void CSrcEdit::SrcNative::doubleClick(QMouseEvent* event)
{
    m_dragPlace = event->position().toPoint();
    if (m_dragPlace.x() < marginWidth)
        return press(event);
    m_sinceDouble.start();
    m_dragging = false;
    m_wantedX = -1;
    act([&] { state.cursor.select(state.cursor.wordAt(pointAt(m_dragPlace))); });
}

void CSrcEdit::SrcNative::release()
{
    m_dragging = false;
    m_autoScroll.stop();
    QClipboard* clipboard = QGuiApplication::clipboard();
    if (state.cursor.hasSelection() && clipboard->supportsSelection())
        clipboard->setText(toQString(state.text.text(state.cursor.selection())),
                           QClipboard::Selection);
}

void CSrcEdit::SrcNative::dragTo(QPoint place)
{
    if (!m_dragging)
        return;
    m_dragPlace = place;
    const bool outside = !surface->rect().contains(place);
    if (outside && !m_autoScroll.isActive())
        m_autoScroll.start(scrollInterval, area);
    else if (!outside)
        m_autoScroll.stop();
    SrcPoint point = pointAt(place);
    if (m_draggingLines && point >= state.cursor.anchor())
        point = state.text.clamped({point.line + 1, 0});
    else if (m_draggingLines)
        point.column = 0;
    if (point != state.cursor.caret())
        act([&] { state.cursor.setCaret(point, true); });
}

void CSrcEdit::SrcNative::openMenu(QPoint place)
{
    struct Command {
        Phrase text;
        QKeySequence::StandardKey keys;
        bool enabled;
        std::function<void()> run;
    };
    const bool writable = !state.readOnly;
    const bool selected = state.cursor.hasSelection();
    const Command commands[] = {
        {Phrase::Undo, QKeySequence::Undo, writable && edit.canUndo(), [this] { edit.undo(); }},
        {Phrase::Redo, QKeySequence::Redo, writable && edit.canRedo(), [this] { edit.redo(); }},
        {Phrase::Cut, QKeySequence::Cut, writable && selected, [this] { edit.cut(); }},
        {Phrase::Copy, QKeySequence::Copy, selected, [this] { edit.copy(); }},
        {Phrase::Paste, QKeySequence::Paste, writable, [this] { edit.paste(); }},
        {Phrase::SelectAll, QKeySequence::SelectAll, true, [this] { edit.selectAll(); }},
    };
    QMenu menu; // without a parent: the editor may go while it is open
    std::vector<const QAction*> actions;
    for (const Command& command : commands) {
        if (command.text == Phrase::Cut || command.text == Phrase::SelectAll)
            menu.addSeparator();
        QAction* action = menu.addAction(toQString(phrase(command.text)));
        action->setShortcut(command.keys);
        action->setEnabled(command.enabled);
        actions.push_back(action);
    }
    const QPointer<Native> alive(this);
    const QAction* chosen = menu.exec(place);
    if (!alive || !chosen)
        return;
    const auto number = std::find(actions.begin(), actions.end(), chosen) - actions.begin();
    barrier(commands[number].run);
}

void CSrcEdit::SrcNative::compose(QInputMethodEvent* event)
{
    if (state.readOnly)
        return;
    preedit = event->preeditString();
    const std::wstring commit = fromQString(event->commitString());
    const int start = event->replacementStart();
    const int length = event->replacementLength();
    if (commit.empty() && length == 0) {
        surface->update();
        return;
    }
    act([&] {
        if (length > 0) {
            const SrcPoint at = state.cursor.caret();
            state.cursor.select(
                {{at.line, at.column + start}, {at.line, at.column + start + length}});
        }
        state.cursor.insert(commit, true);
    });
}

} // namespace OviAPI
