#include <oviapi/panel.h>

#include <QFrame>

#include "native.h"

namespace OviAPI {

namespace {

// A frame with the surface inside it.
struct FramedNative : public Native {
    FramedNative(WVisualObject& owning, std::unique_ptr<QFrame> made)
        : Native(owning, std::move(made), new QWidget)
        , frame(as<QFrame>())
    {
        frame->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
        surface->setParent(frame); // owned by the frame
    }

    void layOut() override { surface->setGeometry(frame->contentsRect()); }

    bool filterWidget(QEvent* event) override
    {
        const QPointer<Native> alive(this);
        if (event->type() == QEvent::Resize)
            layOut();
        return !alive || Native::filterWidget(event);
    }

    QFrame* frame;
};

} // namespace

WPanel::WPanel() = default;
WPanel::~WPanel() = default;

bool WPanel::onMinimize()
{
    return true;
}
bool WPanel::onMaximize()
{
    return true;
}
bool WPanel::onRestore()
{
    return true;
}
bool WPanel::onClose()
{
    return true;
}

void WPanel::close()
{
    show(false);
}

std::unique_ptr<Native> WPanel::makeNative()
{
    std::unique_ptr<Native> native;
    if (style() & Border)
        native = std::make_unique<FramedNative>(*this, std::make_unique<QFrame>());
    else
        native = std::make_unique<Native>(*this, std::make_unique<QWidget>());
    native->widget->setFocusPolicy(style() & TabStop ? Qt::StrongFocus : Qt::NoFocus);
    return native;
}

} // namespace OviAPI
