// The window behind a form.
#pragma once

#include <vector>

#include <QMenuBar>

#include <oviapi/form.h>

#include "native.h"

namespace OviAPI {

// The surface lies below the menu bar and the bars at the upper edge, and fills the rest of the
// window down to those at the lower edge.
struct WForm::FormNative : public Native {
    FormNative(WForm& form, std::unique_ptr<QWidget> window, QWidget* inside);

    void layOut() override;
    // Shows the items of the form's menu as its menu bar.
    void fillBar();

    // Bars are children of the form whose widgets lie on the window beside the surface, as high as
    // they want to be.
    enum class Edge { Upper, Lower };
    void dock(WVisualObject& strip, Edge edge);
    void undock(const WVisualObject& strip);
    bool isDocked(const WVisualObject& strip) const;
    void layOutAgain();
    // The native part of the form that is the parent; null when the parent is none.
    static FormNative* around(const WVisualObject& strip);

    WForm& form;
    QPointer<QMenuBar> bar;

protected:
    bool filterWidget(QEvent* event) override;
    bool unhandledKey(QKeyEvent* event) override;

private:
    struct Strip {
        WVisualObject* object;
        Edge edge;
    };

    void stateChanged(Qt::WindowStates before);
    void placeStrips(Edge edge, int& upper, int& lower);

    std::vector<Strip> m_strips;
};

} // namespace OviAPI
