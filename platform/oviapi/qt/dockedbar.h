// A control that lies at the edge of its form: what tool bars and status lines have in common.
#pragma once

#include "formnative.h"

namespace OviAPI {

struct BarNative : public Native {
    using Native::Native;

    static constexpr auto Upper = WForm::FormNative::Edge::Upper;
    static constexpr auto Lower = WForm::FormNative::Edge::Lower;

    // When the parent is a form.
    void dock(WForm::FormNative::Edge edge)
    {
        if (auto* form = WForm::FormNative::around(owner))
            form->dock(owner, edge);
    }
    // Before the native part goes or gets another parent.
    void undock()
    {
        if (auto* form = WForm::FormNative::around(owner))
            form->undock(owner);
    }
    bool isDocked() const
    {
        const auto* form = WForm::FormNative::around(owner);
        return form && form->isDocked(owner);
    }

protected:
    bool filterWidget(QEvent* event) override
    {
        const QPointer<Native> alive(this);
        switch (event->type()) {
        case QEvent::ShowToParent:
        case QEvent::HideToParent:
        case QEvent::LayoutRequest:
        case QEvent::FontChange:
            if (isDocked())
                WForm::FormNative::around(owner)->layOutAgain();
            return !alive || Native::filterWidget(event);
        default:
            return Native::filterWidget(event);
        }
    }
};

} // namespace OviAPI
