// An application object for tests that draw.
#pragma once

#include <QApplication>
#include <QPalette>

namespace Drawing {

// Exchanges the palette of the application until the end of the scope.
class PaletteScope {
public:
    explicit PaletteScope(const QPalette& palette)
        : m_before(QApplication::palette())
    {
        QApplication::setPalette(palette);
    }
    ~PaletteScope() { QApplication::setPalette(m_before); }
    PaletteScope(const PaletteScope&) = delete;
    PaletteScope& operator=(const PaletteScope&) = delete;

private:
    QPalette m_before;
};

inline QPalette darkPalette()
{
    QPalette palette(QColor(53, 53, 53));
    palette.setColor(QPalette::Base, QColor(35, 35, 35));
    palette.setColor(QPalette::Text, QColor(230, 230, 230));
    palette.setColor(QPalette::WindowText, QColor(230, 230, 230));
    return palette;
}

} // namespace Drawing
