#include <oviapi/srcedit.h>

#include <algorithm>

#include <QClipboard>
#include <QGuiApplication>

#include "convert.h"
#include "srcaccessible.h"
#include "srcfindbar.h"
#include "srcview.h"

namespace OviAPI {

namespace {

constexpr int minZoom = -6;
constexpr int maxZoom = 40;
constexpr int maxTabWidth = 16;

SrcPoint toPoint(SrcPosition position)
{
    const auto fromZero = [](int number) { return std::max(number, 1) - 1; };
    return {fromZero(position.line), fromZero(position.column)};
}

SrcPosition toPosition(SrcPoint point)
{
    return {point.line + 1, point.column + 1};
}

SrcSpan toSpan(SrcRange range)
{
    return {toPoint(range.from), toPoint(range.to)};
}

SrcRange toRange(const SrcSpan& span)
{
    return {toPosition(span.from), toPosition(span.to)};
}

} // namespace

CSrcEdit::CSrcEdit()
    : m_state(std::make_unique<State>())
{
}

CSrcEdit::~CSrcEdit()
{
    destroy(); // while the text is there
}

std::unique_ptr<Native> CSrcEdit::makeNative()
{
    SrcAccessible::install();
    auto native = std::make_unique<SrcNative>(*this, std::make_unique<SrcArea>());
    m_view = native.get();
    return native;
}

void CSrcEdit::nativeGoes()
{
    m_view = nullptr;
}

bool CSrcEdit::onTextChanged()
{
    return false;
}

bool CSrcEdit::onModified(bool)
{
    return false;
}

bool CSrcEdit::onCursorMoved()
{
    return false;
}

CSrcEdit::Before CSrcEdit::before() const
{
    const SrcCursor& cursor = m_state->cursor;
    return {m_state->text.revision(), cursor.caret(), cursor.anchor(), m_state->text.isModified()};
}

void CSrcEdit::settle(const Before& then)
{
    const Before now = before();
    const bool text = now.revision != then.revision;
    const bool moved = now.caret != then.caret || now.anchor != then.anchor;
    if (text)
        m_state->hasError = false;
    if (m_view && (text || moved))
        m_view->refresh(text, true);
    const std::weak_ptr<const void> alive = life();
    if (text)
        dispatch<&CSrcEdit::onTextChanged>(*this);
    if (!alive.expired() && now.modified != then.modified)
        dispatch<&CSrcEdit::onModified>(*this, now.modified);
    if (!alive.expired() && moved)
        dispatch<&CSrcEdit::onCursorMoved>(*this);
}

void CSrcEdit::setText(const wchar_t* text)
{
    change([&] {
        m_state->text.set(text ? text : L"");
        m_state->cursor.setCaret({0, 0});
        if (m_view)
            m_view->textReplaced();
    });
}

std::wstring CSrcEdit::text() const
{
    return m_state->text.text();
}

int CSrcEdit::lineCount() const
{
    return m_state->text.lineCount();
}

std::wstring CSrcEdit::lineText(int line) const
{
    return line >= 1 && line <= lineCount() ? m_state->text.line(line - 1) : std::wstring();
}

SrcPosition CSrcEdit::caret() const
{
    return toPosition(m_state->cursor.caret());
}

void CSrcEdit::setCaret(SrcPosition position)
{
    change([&] { m_state->cursor.setCaret(toPoint(position)); });
}

void CSrcEdit::goToLine(int line)
{
    const int inside = std::clamp(line, 1, lineCount());
    change([&] {
        m_state->cursor.setCaret({inside - 1, 0});
        if (m_view)
            m_view->showCaret(true);
    });
}

SrcRange CSrcEdit::selection() const
{
    return toRange(m_state->cursor.selection());
}

void CSrcEdit::select(SrcRange range)
{
    change([&] { m_state->cursor.select(toSpan(range)); });
}

void CSrcEdit::selectAll()
{
    change([&] { m_state->cursor.select({{0, 0}, m_state->text.end()}); });
}

std::wstring CSrcEdit::selectedText() const
{
    return m_state->text.text(m_state->cursor.selection());
}

std::wstring CSrcEdit::textOf(SrcRange range) const
{
    return m_state->text.text(toSpan(range));
}

void CSrcEdit::insert(const wchar_t* text)
{
    change([&] { m_state->cursor.insert(text ? text : L""); });
}

void CSrcEdit::replace(SrcRange range, const wchar_t* text)
{
    change([&] {
        m_state->cursor.select(toSpan(range));
        m_state->cursor.insert(text ? text : L"");
    });
}

void CSrcEdit::undo()
{
    change([&] { m_state->cursor.undo(); });
}

void CSrcEdit::redo()
{
    change([&] { m_state->cursor.redo(); });
}

bool CSrcEdit::canUndo() const
{
    return m_state->text.canUndo();
}

bool CSrcEdit::canRedo() const
{
    return m_state->text.canRedo();
}

void CSrcEdit::setUndoLimit(int changes)
{
    constexpr size_t characters = size_t{1} << 25;
    m_state->text.setUndoLimit(static_cast<size_t>(std::max(changes, 0)), characters);
}

void CSrcEdit::cut()
{
    if (m_state->readOnly)
        return;
    copy();
    if (m_state->cursor.hasSelection())
        change([&] { m_state->cursor.insert({}); });
}

void CSrcEdit::copy()
{
    if (qGuiApp && m_state->cursor.hasSelection())
        QGuiApplication::clipboard()->setText(toQString(selectedText()));
}

void CSrcEdit::paste()
{
    if (!qGuiApp || m_state->readOnly)
        return;
    const std::wstring text = fromQString(QGuiApplication::clipboard()->text());
    if (!text.empty())
        change([&] { m_state->cursor.insert(text); });
}

void CSrcEdit::setReadOnly(bool readOnly)
{
    m_state->readOnly = readOnly;
    if (m_view)
        m_view->area->setAttribute(Qt::WA_InputMethodEnabled, !readOnly);
}

bool CSrcEdit::isReadOnly() const
{
    return m_state->readOnly;
}

bool CSrcEdit::isModified() const
{
    return m_state->text.isModified();
}

void CSrcEdit::setModified(bool modified)
{
    change([&] { m_state->text.setModified(modified); });
}

void CSrcEdit::setPlainText(bool plain)
{
    m_state->plain = plain;
    repaint();
}

bool CSrcEdit::isPlainText() const
{
    return m_state->plain;
}

void CSrcEdit::setTabWidth(int characters)
{
    m_state->tabWidth = std::clamp(characters, 1, maxTabWidth);
    if (m_view)
        m_view->fontChanged();
}

int CSrcEdit::tabWidth() const
{
    return m_state->tabWidth;
}

void CSrcEdit::setZoom(int points)
{
    m_state->zoom = std::clamp(points, minZoom, maxZoom);
    if (m_view)
        m_view->fontChanged();
}

int CSrcEdit::zoom() const
{
    return m_state->zoom;
}

void CSrcEdit::setFont(const Font& font)
{
    m_state->ownFont = !font.isEmpty();
    WVisualObject::setFont(font);
    if (m_view)
        m_view->fontChanged();
}

bool CSrcEdit::find(const wchar_t* what, int flags)
{
    bool found = false;
    change([&] { found = m_state->cursor.find(what ? what : L"", flags); });
    return found;
}

bool CSrcEdit::replaceFound(const wchar_t* what, const wchar_t* with, int flags)
{
    bool replaced = false;
    change(
        [&] { replaced = m_state->cursor.replace(what ? what : L"", with ? with : L"", flags); });
    return replaced;
}

int CSrcEdit::replaceAll(const wchar_t* what, const wchar_t* with, int flags)
{
    int count = 0;
    change(
        [&] { count = m_state->cursor.replaceAll(what ? what : L"", with ? with : L"", flags); });
    return count;
}

void CSrcEdit::showFindBar(bool withReplace)
{
    if (m_view)
        m_view->openBar(withReplace ? SrcFindBar::Mode::Replace : SrcFindBar::Mode::Find);
}

void CSrcEdit::hideFindBar()
{
    if (!isFindBarShown())
        return;
    const std::weak_ptr<const void> alive = life();
    m_view->area->setFocus(Qt::OtherFocusReason); // runs handlers
    if (alive.expired() || !m_view)
        return;
    m_view->bar->hide();
    m_view->placeBar();
}

bool CSrcEdit::isFindBarShown() const
{
    return m_view && m_view->bar->isVisibleTo(m_view->area);
}

void CSrcEdit::indentSelection()
{
    change([&] { m_state->cursor.indent(m_state->tabWidth); });
}

void CSrcEdit::unindentSelection()
{
    change([&] { m_state->cursor.unindent(m_state->tabWidth); });
}

void CSrcEdit::toggleComment()
{
    change([&] { m_state->cursor.toggleComment(); });
}

void CSrcEdit::markError(SrcPosition position, const wchar_t* message)
{
    m_state->hasError = true;
    m_state->error = m_state->text.clamped(toPoint(position));
    m_state->errorMessage = message ? message : L"";
    repaint();
}

void CSrcEdit::clearError()
{
    m_state->hasError = false;
    repaint();
}

bool CSrcEdit::hasError() const
{
    return m_state->hasError;
}

SrcPosition CSrcEdit::errorPosition() const
{
    return toPosition(m_state->error);
}

SrcRange CSrcEdit::statementAt(SrcPosition position) const
{
    return toRange(m_state->text.statementAt(toPoint(position)));
}

} // namespace OviAPI
