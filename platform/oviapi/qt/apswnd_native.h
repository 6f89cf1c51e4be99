// The scroll area behind aCApsWnd.
#pragma once

#include <QAbstractScrollArea>
#include <QPointer>
#include <QScrollBar>

#include <oviapi/apswnd.h>

#include "native.h"

namespace OviAPI {

// A scroll bar that is painted again only when its thumb has moved.
class ThriftyBar : public QScrollBar {
public:
    using QScrollBar::QScrollBar;

    void place(int value);

private:
    QRect thumb() const;
};

class ScrollArea : public QAbstractScrollArea {
public:
    explicit ScrollArea(aCApsWnd& window);

    aCApsWnd& owner;
    // Set while the framework itself moves a bar.
    bool silent = false;

protected:
    void scrollContentsBy(int dx, int dy) override;
};

struct ScrollNative : Native {
    explicit ScrollNative(aCApsWnd& window);

    void applyBar(ScrollBar bar);
    // The position alone.
    void applyPosition(ScrollBar bar);
    ScrollArea* area() const { return static_cast<ScrollArea*>(widget.data()); }
    QScrollBar* bar(ScrollBar which) const;

    bool eventFilter(QObject* object, QEvent* event) override;

    // Set while the focus moves between the area and a control inside that has it in its name:
    // nobody is told.
    bool focusStays = false;

protected:
    bool filterSurface(QEvent* event) override;
    bool filterWidget(QEvent* event) override;

private:
    void step(ScrollBar which, int action);
    bool hint(QEvent* event);

    aCApsWnd& m_window;
};

} // namespace OviAPI
