#include <oviapi/palette.h>

#include <gtest/gtest.h>

#include <QPalette>

#include <oviapi/qt/srclayout.h>

namespace {

using namespace OviAPI;

TEST(SrcColors, EveryKindOfTextCanBeReadOnEveryPalette)
{
    const QColor bases[] = {Qt::white,         QColor(30, 30, 30),
                            Qt::black,         QColor(250, 240, 200),
                            QColor(0, 0, 128), QColor(128, 128, 128)};
    for (const QColor& base : bases) {
        QPalette palette;
        palette.setColor(QPalette::Base, base);
        palette.setColor(QPalette::Text, base.lightness() < 128 ? Qt::white : Qt::black);
        const SrcColors colors(palette);
        const auto ratio = [](const QColor& a, const QColor& b) {
            return contrast(Color(a.red(), a.green(), a.blue()),
                            Color(b.red(), b.green(), b.blue()));
        };
        constexpr double wanted = 4.5;
        for (const QColor& color : colors.kinds) {
            EXPECT_GE(ratio(color, colors.background), wanted) << base.name().toStdString();
            EXPECT_GE(ratio(color, colors.caretLine), wanted) << base.name().toStdString();
        }
        EXPECT_GE(ratio(colors.number, colors.margin), wanted);
        EXPECT_GE(ratio(colors.error, colors.background), wanted);
    }
}

TEST(SrcLayout, PlacesAndColumnsLeadToEachOther)
{
    SrcLayout layout;
    layout.setFont(QFont("DejaVu Sans Mono", 10), 4);
    const std::wstring line = L"a\tb \x1F600 \x416\x4E2D \x0645\x0631 e\x301x";
    double before = -1;
    for (int column = 0; column <= 8; ++column) {
        const double x = layout.xOf(line, column);
        EXPECT_GT(x, before) << column;
        before = x;
        EXPECT_EQ(layout.columnAt(line, x + 0.1), column);
    }
    EXPECT_EQ(layout.xOf(line, 2), 4 * layout.xOf(L"m", 1)) << "the first tab stop";
    EXPECT_EQ(layout.columnAt(line, 1e6), static_cast<int>(line.size()));
    EXPECT_EQ(layout.columnAt(line, -5), 0);
}

} // namespace
