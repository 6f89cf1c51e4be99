#include <oviapi/lineedit.h>

#include <algorithm>

#include <QLineEdit>

#include <oviapi/text.h>

#include "convert.h"
#include "native.h"

namespace OviAPI {

namespace {

QLineEdit* editOf(const WVisualObject& object)
{
    return object.native() ? object.native()->as<QLineEdit>() : nullptr;
}

// Between positions in wide text and in the toolkit's UTF-16.
int toUnits(const std::wstring& text, int position)
{
    const auto count = static_cast<size_t>(std::max(position, 0));
    return static_cast<int>(toQString(std::wstring_view(text).substr(0, count)).size());
}

int toCharacters(const QString& text, int units)
{
    return static_cast<int>(fromQString(text.left(units)).size());
}

} // namespace

WLineEdit::WLineEdit() = default;
WLineEdit::~WLineEdit() = default;

bool WLineEdit::onTextChanged()
{
    return false;
}

std::unique_ptr<Native> WLineEdit::makeNative()
{
    auto edit = std::make_unique<QLineEdit>();
    edit->setMaxLength(m_maxLength);
    edit->setReadOnly(m_readOnly);
    edit->setEchoMode(m_password ? QLineEdit::Password : QLineEdit::Normal);
    edit->setText(toQString(m_text));
    auto native = std::make_unique<Native>(*this, std::move(edit));
    QObject::connect(native->as<QLineEdit>(), &QLineEdit::textChanged, native.get(),
                     [this] { barrier([&] { dispatch<&WLineEdit::onTextChanged>(*this); }); });
    return native;
}

void WLineEdit::nativeGoes()
{
    m_text = text();
}

void WLineEdit::setText(const wchar_t* text)
{
    if (QLineEdit* edit = editOf(*this))
        edit->setText(toQString(text ? text : L""));
    else
        m_text.assign(text ? text : L"");
}

std::wstring WLineEdit::text() const
{
    const QLineEdit* edit = editOf(*this);
    return edit ? fromQString(edit->text()) : m_text.substr(0, static_cast<size_t>(m_maxLength));
}

void WLineEdit::getText(wchar_t* buf, int size) const
{
    if (buf && size > 0)
        copyText(buf, static_cast<size_t>(size), text());
}

void WLineEdit::setMaxLength(int characters)
{
    m_maxLength = std::max(characters, 0);
    if (QLineEdit* edit = editOf(*this))
        edit->setMaxLength(m_maxLength);
}

void WLineEdit::setReadOnly(bool readOnly)
{
    m_readOnly = readOnly;
    if (QLineEdit* edit = editOf(*this))
        edit->setReadOnly(readOnly);
}

void WLineEdit::setPassword(bool password)
{
    m_password = password;
    if (QLineEdit* edit = editOf(*this))
        edit->setEchoMode(password ? QLineEdit::Password : QLineEdit::Normal);
}

void WLineEdit::setCaret(int position)
{
    if (QLineEdit* edit = editOf(*this)) {
        edit->deselect();
        edit->setCursorPosition(toUnits(text(), position));
    }
}

int WLineEdit::caret() const
{
    const QLineEdit* edit = editOf(*this);
    return edit ? toCharacters(edit->text(), edit->cursorPosition()) : 0;
}

void WLineEdit::setCaretToEnd()
{
    if (QLineEdit* edit = editOf(*this)) {
        edit->deselect();
        edit->end(false);
    }
}

void WLineEdit::select(int start, int length)
{
    QLineEdit* edit = editOf(*this);
    if (!edit)
        return;
    const std::wstring all = text();
    const int size = static_cast<int>(all.size());
    start = std::clamp(start, 0, size);
    const int end = length < 0 || length > size - start ? size : start + length;
    edit->setSelection(toUnits(all, start), toUnits(all, end) - toUnits(all, start));
}

std::wstring WLineEdit::selectedText() const
{
    const QLineEdit* edit = editOf(*this);
    return edit ? fromQString(edit->selectedText()) : std::wstring();
}

} // namespace OviAPI
