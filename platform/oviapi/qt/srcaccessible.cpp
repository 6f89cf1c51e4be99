#include "srcaccessible.h"

#include <algorithm>

#include <QFontInfo>

#include "convert.h"

namespace OviAPI {

namespace {

QAccessibleInterface* make(const QString&, QObject* object)
{
    auto* area = dynamic_cast<SrcArea*>(object);
    return area ? new SrcAccessible(area) : nullptr; // the toolkit owns it
}

} // namespace

SrcAccessible::SrcAccessible(SrcArea* area)
    : QAccessibleWidget(area, QAccessible::EditableText)
    , m_area(area)
{
}

void SrcAccessible::install()
{
    QAccessible::installFactory(&make);
}

CSrcEdit::SrcNative* SrcAccessible::view() const
{
    return isValid() ? m_area->view() : nullptr;
}

void* SrcAccessible::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TextInterface)
        return static_cast<QAccessibleTextInterface*>(this);
    if (type == QAccessible::EditableTextInterface)
        return static_cast<QAccessibleEditableTextInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
}

QAccessible::State SrcAccessible::state() const
{
    QAccessible::State state = QAccessibleWidget::state();
    state.multiLine = true;
    state.focusable = true;
    if (const auto* editor = view()) {
        state.readOnly = editor->state.readOnly;
        state.editable = !editor->state.readOnly;
        state.selectableText = true;
    }
    return state;
}

QString SrcAccessible::text(QAccessible::Text kind) const
{
    const auto* editor = view();
    if (kind == QAccessible::Value && editor)
        return toQString(editor->state.text.text());
    return QAccessibleWidget::text(kind);
}

SrcRange SrcAccessible::range(int from, int to) const
{
    const SrcText& text = view()->state.text;
    const SrcPoint a = text.point(static_cast<size_t>(std::max(from, 0)));
    const SrcPoint b = text.point(static_cast<size_t>(std::max(to, 0)));
    return {{a.line + 1, a.column + 1}, {b.line + 1, b.column + 1}};
}

void SrcAccessible::selection(int index, int* from, int* to) const
{
    *from = *to = 0;
    const auto* editor = view();
    if (index != 0 || !editor || !editor->state.cursor.hasSelection())
        return;
    const SrcSpan span = editor->state.cursor.selection();
    *from = static_cast<int>(editor->state.text.offset(span.from));
    *to = static_cast<int>(editor->state.text.offset(span.to));
}

int SrcAccessible::selectionCount() const
{
    const auto* editor = view();
    return editor && editor->state.cursor.hasSelection() ? 1 : 0;
}

void SrcAccessible::removeSelection(int index)
{
    if (index == 0)
        setCursorPosition(cursorPosition());
}

void SrcAccessible::setSelection(int index, int from, int to)
{
    if (auto* editor = view(); editor && index == 0)
        barrier([&] { editor->edit.select(range(from, to)); });
}

int SrcAccessible::cursorPosition() const
{
    const auto* editor = view();
    return editor ? static_cast<int>(editor->state.text.offset(editor->state.cursor.caret())) : 0;
}

void SrcAccessible::setCursorPosition(int position)
{
    if (auto* editor = view())
        barrier([&] { editor->edit.setCaret(range(position, position).from); });
}

QString SrcAccessible::text(int from, int to) const
{
    const auto* editor = view();
    return editor ? toQString(editor->edit.textOf(range(from, to))) : QString();
}

int SrcAccessible::characterCount() const
{
    const auto* editor = view();
    return editor ? static_cast<int>(editor->state.text.size()) : 0;
}

// The unit of text that holds the offset.
SrcSpan SrcAccessible::unitAt(int offset, QAccessible::TextBoundaryType type) const
{
    const SrcText& text = view()->state.text;
    const SrcPoint at = text.point(static_cast<size_t>(std::max(offset, 0)));
    switch (type) {
    case QAccessible::CharBoundary:
        return {at, text.point(static_cast<size_t>(std::max(offset, 0)) + 1)};
    case QAccessible::WordBoundary:
        return view()->state.cursor.wordAt(at);
    case QAccessible::NoBoundary:
        return {{0, 0}, text.end()};
    default: // lines, and sentences and paragraphs, which source text has not
        return {{at.line, 0}, text.clamped({at.line + 1, 0})};
    }
}

QString SrcAccessible::spanText(const SrcSpan& span, int* from, int* to) const
{
    const SrcText& text = view()->state.text;
    *from = static_cast<int>(text.offset(span.from));
    *to = static_cast<int>(text.offset(span.to));
    return toQString(text.text(span));
}

QString SrcAccessible::textAtOffset(int offset, QAccessible::TextBoundaryType type, int* from,
                                    int* to) const
{
    *from = *to = -1;
    if (!view() || offset < -2 || offset > characterCount())
        return {};
    if (offset < 0) // -1 the end, -2 the caret
        offset = offset == -1 ? characterCount() : cursorPosition();
    return spanText(unitAt(offset, type), from, to);
}

QString SrcAccessible::textBeforeOffset(int offset, QAccessible::TextBoundaryType type, int* from,
                                        int* to) const
{
    textAtOffset(offset, type, from, to);
    return *from > 0 ? textAtOffset(*from - 1, type, from, to) : (*from = *to = -1, QString());
}

QString SrcAccessible::textAfterOffset(int offset, QAccessible::TextBoundaryType type, int* from,
                                       int* to) const
{
    textAtOffset(offset, type, from, to);
    const bool more = *to >= 0 && *to < characterCount();
    return more ? textAtOffset(*to, type, from, to) : (*from = *to = -1, QString());
}

QRect SrcAccessible::characterRect(int offset) const
{
    auto* editor = view();
    if (!editor || offset < 0 || offset > characterCount())
        return {};
    const QRect start = editor->rectOf(editor->state.text.point(static_cast<size_t>(offset)));
    const QRect next = editor->rectOf(editor->state.text.point(static_cast<size_t>(offset) + 1));
    const int width = next.y() == start.y() ? std::max(1, next.x() - start.x()) : 1;
    return {m_area->viewport()->mapToGlobal(start.topLeft()), QSize(width, start.height())};
}

int SrcAccessible::offsetAtPoint(const QPoint& point) const
{
    auto* editor = view();
    if (!editor)
        return -1;
    const QPoint inside = m_area->viewport()->mapFromGlobal(point);
    return static_cast<int>(editor->state.text.offset(editor->pointAt(inside)));
}

void SrcAccessible::scrollToSubstring(int from, int)
{
    setCursorPosition(from);
}

QString SrcAccessible::attributes(int, int* from, int* to) const
{
    *from = 0;
    *to = characterCount();
    auto* editor = view();
    if (!editor)
        return {};
    const QFontInfo font(editor->layout.font());
    return QStringLiteral("font-family:\"%1\";font-size:%2pt;")
        .arg(font.family())
        .arg(font.pointSize());
}

void SrcAccessible::deleteText(int from, int to)
{
    replaceText(from, to, {});
}

void SrcAccessible::insertText(int offset, const QString& text)
{
    replaceText(offset, offset, text);
}

void SrcAccessible::replaceText(int from, int to, const QString& text)
{
    auto* editor = view();
    if (!editor || editor->state.readOnly)
        return;
    barrier([&] { editor->edit.replace(range(from, to), fromQString(text).c_str()); });
}

} // namespace OviAPI
