// The keys of a source editor.

#include <algorithm>

#include <QKeyEvent>
#include <QScrollBar>

#include "convert.h"
#include "srcfindbar.h"
#include "srcview.h"

namespace OviAPI {

namespace {

bool hasControl(const QKeyEvent& event)
{
    return (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) ==
           Qt::ControlModifier;
}

bool isPlain(const QKeyEvent& event)
{
    return !(event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
}

bool hasShift(const QKeyEvent& event)
{
    return event.modifiers() & Qt::ShiftModifier;
}

// What the key types; empty for none. Control and Alt together is how some keyboards type signs.
QString typed(const QKeyEvent& event)
{
    const auto held = event.modifiers() & (Qt::ControlModifier | Qt::AltModifier);
    const bool sign = held == (Qt::ControlModifier | Qt::AltModifier);
    const QString text = event.text();
    if (text.isEmpty() || (held && !sign) || (event.modifiers() & Qt::MetaModifier))
        return {};
    return text.front().isPrint() || text.front().isSurrogate() ||
                   text.front().category() == QChar::Other_Format
               ? text
               : QString();
}

} // namespace

bool CSrcEdit::SrcNative::isCommand(const QKeyEvent& event) const
{
    if (!typed(event).isEmpty())
        return true;
    switch (event.key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Home:
    case Qt::Key_End:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Backspace:
    case Qt::Key_Delete:
    case Qt::Key_Insert:
        return isPlain(event) || hasControl(event);
    case Qt::Key_F3:
        return isPlain(event);
    case Qt::Key_Z:
    case Qt::Key_Y:
    case Qt::Key_X:
    case Qt::Key_C:
    case Qt::Key_V:
    case Qt::Key_A:
    case Qt::Key_F:
    case Qt::Key_H:
    case Qt::Key_G:
    case Qt::Key_M:
    case Qt::Key_Slash:
    case Qt::Key_Plus:
    case Qt::Key_Equal:
    case Qt::Key_Minus:
    case Qt::Key_0:
        return hasControl(event);
    default:
        return false;
    }
}

bool CSrcEdit::SrcNative::unhandledKey(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape && bar->isVisibleTo(area) && isPlain(*event)) {
        bar->close();
        return true;
    }
    return tabKey(*event) || controlKey(*event) || moveKey(*event) ||
           (!state.readOnly && editKey(*event));
}

bool CSrcEdit::SrcNative::tabKey(const QKeyEvent& event)
{
    const bool back = event.key() == Qt::Key_Backtab || hasShift(event);
    if ((event.key() != Qt::Key_Tab && event.key() != Qt::Key_Backtab) ||
        (event.modifiers() & (Qt::AltModifier | Qt::MetaModifier)))
        return false;
    if (hasControl(event)) {
        area->focusNextPrevChild(!back);
        return true;
    }
    if (tabMoves || state.readOnly)
        return false; // the toolkit moves the focus
    m_wantedX = -1;
    act([&] {
        if (back)
            state.cursor.unindent(state.tabWidth);
        else
            state.cursor.indent(state.tabWidth);
    });
    return true;
}

bool CSrcEdit::SrcNative::controlKey(const QKeyEvent& event)
{
    const bool shift = hasShift(event);
    if (event.key() == Qt::Key_F3 && isPlain(event)) {
        if (!bar->findOn(shift))
            barrier([&] { edit.showFindBar(); });
        return true;
    }
    if (event.key() == Qt::Key_Delete && isPlain(event) && shift) {
        barrier([&] { edit.cut(); });
        return true;
    }
    if (event.key() == Qt::Key_Insert && isPlain(event) && shift) {
        barrier([&] { edit.paste(); });
        return true;
    }
    if (!hasControl(event))
        return false;
    bool known = true;
    m_wantedX = -1;
    barrier([&] {
        switch (event.key()) {
        case Qt::Key_Z:
            if (!state.readOnly)
                shift ? edit.redo() : edit.undo();
            break;
        case Qt::Key_Y:
            if (!state.readOnly)
                edit.redo();
            break;
        case Qt::Key_X:
            edit.cut();
            break;
        case Qt::Key_C:
        case Qt::Key_Insert:
            edit.copy();
            break;
        case Qt::Key_V:
            edit.paste();
            break;
        case Qt::Key_A:
            edit.selectAll();
            break;
        case Qt::Key_F:
            edit.showFindBar();
            break;
        case Qt::Key_H:
            edit.showFindBar(true);
            break;
        case Qt::Key_G:
            openBar(SrcFindBar::Mode::Line);
            break;
        case Qt::Key_M:
            tabMoves = !tabMoves;
            break;
        case Qt::Key_Slash:
            if (!state.readOnly)
                edit.toggleComment();
            break;
        case Qt::Key_Plus:
        case Qt::Key_Equal:
            edit.setZoom(edit.zoom() + 1);
            break;
        case Qt::Key_Minus:
            edit.setZoom(edit.zoom() - 1);
            break;
        case Qt::Key_0:
            edit.setZoom(0);
            break;
        default:
            known = false;
        }
    });
    return known;
}

void CSrcEdit::SrcNative::moveLines(int lines, bool keepAnchor)
{
    const SrcPoint caret = state.cursor.caret();
    const double x =
        m_wantedX >= 0 ? m_wantedX : layout.xOf(state.text.line(caret.line), caret.column);
    const int line = std::clamp(caret.line + lines, 0, state.text.lineCount() - 1);
    SrcPoint to{line, layout.columnAt(state.text.line(line), x)};
    if (line == caret.line) // beyond the first or last line
        to = lines < 0 ? SrcPoint{0, 0} : state.text.end();
    const QPointer<Native> alive(this);
    act([&] { state.cursor.setCaret(to, keepAnchor); });
    if (alive)
        m_wantedX = x;
}

bool CSrcEdit::SrcNative::moveKey(const QKeyEvent& event)
{
    const bool control = hasControl(event);
    const bool shift = hasShift(event);
    if (!control && !isPlain(event))
        return false;
    QScrollBar* vertical = area->verticalScrollBar();
    std::optional<SrcMove> move;
    switch (event.key()) {
    case Qt::Key_Up:
    case Qt::Key_Down: {
        const int step = event.key() == Qt::Key_Up ? -1 : 1;
        if (control)
            vertical->setValue(vertical->value() + step);
        else
            moveLines(step, shift);
        return true;
    }
    case Qt::Key_PageUp:
    case Qt::Key_PageDown: {
        if (control)
            return false; // pages of a tab control
        const int step = (pageLines() - 1) * (event.key() == Qt::Key_PageUp ? -1 : 1);
        vertical->setValue(vertical->value() + step);
        moveLines(step, shift);
        return true;
    }
    case Qt::Key_Left:
        move = control ? SrcMove::WordLeft : SrcMove::Left;
        break;
    case Qt::Key_Right:
        move = control ? SrcMove::WordRight : SrcMove::Right;
        break;
    case Qt::Key_Home:
        move = control ? SrcMove::TextStart : SrcMove::LineStart;
        break;
    case Qt::Key_End:
        move = control ? SrcMove::TextEnd : SrcMove::LineEnd;
        break;
    default:
        return false;
    }
    m_wantedX = -1;
    act([&] { state.cursor.move(*move, shift); });
    return true;
}

bool CSrcEdit::SrcNative::editKey(const QKeyEvent& event)
{
    const bool control = hasControl(event);
    const bool plain = isPlain(event);
    m_wantedX = -1;
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (!plain)
            return false; // for the application
        act([&] { state.cursor.newLine(); });
        return true;
    case Qt::Key_Backspace:
        if (!plain && !control)
            return false;
        act([&] { control ? state.cursor.removeWordLeft() : state.cursor.removeLeft(); });
        return true;
    case Qt::Key_Delete:
        if (!plain && !control)
            return false;
        act([&] { control ? state.cursor.removeWordRight() : state.cursor.removeRight(); });
        return true;
    case Qt::Key_Insert:
        if (!plain)
            return false;
        overwrite = !overwrite;
        surface->update();
        return true;
    default:
        break;
    }
    const std::wstring text = fromQString(typed(event));
    if (text.empty())
        return false;
    act([&] {
        if (overwrite)
            state.cursor.overwrite(text);
        else
            state.cursor.insert(text, true);
    });
    return true;
}

} // namespace OviAPI
