// The window behind a form.
#pragma once

#include <QMenuBar>

#include <oviapi/form.h>

#include "native.h"

namespace OviAPI {

// The surface lies below the menu bar and fills the rest of the window.
struct WForm::FormNative : public Native {
    FormNative(WForm& form, std::unique_ptr<QWidget> window, QWidget* inside);

    void layOut() override;
    // Shows the items of the form's menu as its menu bar.
    void fillBar();

    WForm& form;
    QPointer<QMenuBar> bar;

protected:
    bool filterWidget(QEvent* event) override;
    bool unhandledKey(QKeyEvent* event) override;

private:
    void stateChanged(Qt::WindowStates before);
};

} // namespace OviAPI
