#include <oviapi/static.h>

#include <QLabel>
#include <QPainter>
#include <QStyle>

#include <oviapi/painter.h>
#include <oviapi/text.h>

#include "convert.h"
#include "native.h"
#include "paintdevice.h"

namespace OviAPI {

WStatic::WStatic() = default;

WStatic::~WStatic() = default;

std::unique_ptr<Native> WStatic::makeNative()
{
    // A label for its mnemonic and for assistive technology; doPaint draws it.
    auto label = std::make_unique<QLabel>();
    label->setTextFormat(Qt::PlainText);
    label->setText(toQString(m_text));
    if (!m_buddyLife.expired())
        label->setBuddy(widgetOf(m_buddy));
    return std::make_unique<Native>(*this, std::move(label));
}

void WStatic::setText(const wchar_t* text)
{
    m_text = text ? text : L"";
    if (native())
        native()->as<QLabel>()->setText(toQString(m_text));
}

void WStatic::getText(wchar_t* buf, int size) const
{
    if (buf && size > 0)
        copyText(buf, static_cast<size_t>(size), m_text);
}

void WStatic::setBuddy(WVisualObject* control)
{
    m_buddy = control;
    m_buddyLife = control ? control->life() : std::weak_ptr<const void>();
    if (native())
        native()->as<QLabel>()->setBuddy(widgetOf(control));
}

bool WStatic::doPaint(PaintDevice* device)
{
    Painter painter(device);
    QPainter* qt = painter ? qtPainter(painter) : nullptr;
    const QWidget* widget = widgetOf(this);
    if (!qt || !widget)
        return false;
    int flags = Qt::AlignTop | Qt::TextShowMnemonic | Qt::TextExpandTabs;
    if (style() & AlignRight)
        flags |= Qt::AlignRight;
    else if (style() & AlignCenter)
        flags |= Qt::AlignHCenter;
    if (style() & WordWrap)
        flags |= Qt::TextWordWrap;
    qt->setFont(widget->font());
    widget->style()->drawItemText(qt, widget->rect(), flags, widget->palette(), widget->isEnabled(),
                                  toQString(m_text), QPalette::WindowText);
    return true;
}

} // namespace OviAPI
