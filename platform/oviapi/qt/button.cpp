#include <oviapi/button.h>

#include <QPushButton>

#include <oviapi/form.h>

#include "convert.h"
#include "native.h"

namespace OviAPI {

namespace {

enum State { Normal, Pressed, Hot, Disabled };

// Keeps the picture that fits the state of the button.
struct ButtonNative : public Native {
    ButtonNative(WButton& owning, std::unique_ptr<QPushButton> made)
        : Native(owning, std::move(made))
        , button(as<QPushButton>())
    {
        QObject::connect(button, &QPushButton::pressed, this, [this] { showIcon(); });
        QObject::connect(button, &QPushButton::released, this, [this] { showIcon(); });
        QObject::connect(button, &QPushButton::clicked, this,
                         [&owning] { barrier([&] { dispatch<&WButton::onPush>(owning); }); });
    }

    bool filterWidget(QEvent* event) override
    {
        if (event->type() == QEvent::Enter || event->type() == QEvent::Leave) {
            hot = event->type() == QEvent::Enter;
            showIcon();
        }
        // While a button has the focus it is the one that Enter presses, and looks like it.
        if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)
            showDefault(event->type() == QEvent::FocusIn);
        return Native::filterWidget(event);
    }

    void showDefault(bool focused)
    {
        const auto* form = dynamic_cast<const WForm*>(objectOf(button->window()));
        const WButton* usual = form ? form->defaultButton() : nullptr;
        auto* other = qobject_cast<QPushButton*>(widgetOf(usual));
        if (other && other != button)
            other->setDefault(!focused);
        button->setDefault(focused || other == button);
    }

    void showIcon()
    {
        State state = Normal;
        if (button->isDown())
            state = Pressed;
        else if (hot && button->isEnabled())
            state = Hot;
        button->setIcon(icons[state].isNull() ? icons[Normal] : icons[state]);
    }

    QPushButton* button;
    QIcon icons[3];
    bool hot = false;
};

} // namespace

WButton::WButton()
{
    setStyle(TabStop | Visible);
}

WButton::~WButton()
{
    if (m_defaultOf)
        m_defaultOf->m_defaultButton = nullptr;
}

bool WButton::onPush()
{
    return false;
}

std::unique_ptr<Native> WButton::makeNative()
{
    auto button = std::make_unique<QPushButton>();
    button->setAutoDefault(false);
    button->setFlat((style() & Flat) != 0);
    button->setFocusPolicy(style() & TabStop ? Qt::StrongFocus : Qt::NoFocus);
    if (!(style() & Visible))
        setShown(false);
    auto native = std::make_unique<ButtonNative>(*this, std::move(button));
    applyTo(*native);
    return native;
}

void WButton::applyTo(Native& native)
{
    auto& target = static_cast<ButtonNative&>(native);
    for (const State state : {Normal, Pressed, Hot})
        target.icons[state] = toQIcon(m_pictures[state]);
    if (!m_pictures[Disabled].isNull() && !m_pictures[Normal].isNull())
        target.icons[Normal].addPixmap(toQPixmap(m_pictures[Disabled], 1.0), QIcon::Disabled);
    const Picture& normal = m_pictures[Normal];
    if (!normal.isNull())
        target.button->setIconSize(QSize(normal.width(), normal.height()));
    const bool pictureAlone = (style() & PictureOnly) && !normal.isNull();
    target.button->setText(pictureAlone ? QString() : toQString(m_text));
    const QString name = pictureAlone ? toQString(m_text) : QString();
    if (accessibleName().empty() && target.button->accessibleName() != name)
        target.button->setAccessibleName(name); // where the caption is not seen
    target.button->setDefault(m_defaultOf != nullptr || target.button->hasFocus());
    target.showIcon();
}

void WButton::apply()
{
    if (native())
        applyTo(*native());
}

void WButton::setText(const wchar_t* text)
{
    m_text = text ? text : L"";
    apply();
}

void WButton::setPictures(const Picture* normal, const Picture* pressed, const Picture* hot,
                          const Picture* disabled)
{
    size_t i = 0;
    for (const Picture* picture : {normal, pressed, hot, disabled})
        m_pictures[i++] = picture ? *picture : Picture();
    apply();
}

void WButton::setDefaultOf(WForm* form)
{
    m_defaultOf = form;
    apply();
}

void WButton::push()
{
    if (native() && native()->widget->isVisible())
        static_cast<ButtonNative*>(native())->button->click();
}

} // namespace OviAPI
