// Outlines and disabled texts that are seen on a black desktop.
#pragma once

#include <QProxyStyle>

namespace OviAPI {

// Gives disabled texts a colour between text and background where the desktop's palette makes them
// vanish.
void liftDisabledTexts();

// The toolkit's own style draws the outlines of fields, boxes and buttons darker than the window,
// which on a black window is nothing. This one draws them light there.
class OutlineStyle : public QProxyStyle {
public:
    // Where the application has that style and such a palette.
    static void installIfNeeded();

    explicit OutlineStyle(QStyle* base);

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget) const override;
};

} // namespace OviAPI
