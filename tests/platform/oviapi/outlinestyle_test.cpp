#include <algorithm>
#include <memory>

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QStyleFactory>
#include <QStyleOption>

#include <gtest/gtest.h>

#include <oviapi/qt/outlinestyle.h>

using OviAPI::OutlineStyle;

namespace {

QPalette blackDesktop()
{
    QPalette palette(Qt::white, Qt::black, Qt::black, Qt::black, Qt::black, Qt::white, Qt::white,
                     Qt::black, Qt::black);
    for (const auto role : {QPalette::WindowText, QPalette::ButtonText, QPalette::Text})
        palette.setColor(QPalette::Disabled, role, Qt::black);
    return palette;
}

// The lightest pixel of what a style draws on black.
template<class Option, class Draw>
int lightest(Option& option, Draw draw)
{
    QImage image(60, 24, QImage::Format_RGB32);
    image.fill(Qt::black);
    option.rect = image.rect();
    option.palette = blackDesktop();
    option.state = QStyle::State_Enabled;
    QPainter painter(&image);
    draw(&option, &painter);
    painter.end();
    int most = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            most = std::max(most, image.pixelColor(x, y).lightness());
    return most;
}

} // namespace

TEST(OutlineStyle, OutlinesAreSeenOnABlackWindow)
{
    const std::unique_ptr<QStyle> plain(QStyleFactory::create("fusion"));
    const OutlineStyle style(QStyleFactory::create("fusion"));
    const auto field = [](const QStyle& with) {
        QStyleOptionFrame option;
        option.lineWidth = 1;
        return lightest(option, [&](const QStyleOptionFrame* o, QPainter* painter) {
            with.drawPrimitive(QStyle::PE_PanelLineEdit, o, painter);
        });
    };
    const auto box = [](const QStyle& with) {
        QStyleOptionButton option;
        return lightest(option, [&](const QStyleOptionButton* o, QPainter* painter) {
            with.drawPrimitive(QStyle::PE_IndicatorCheckBox, o, painter);
        });
    };
    EXPECT_LT(field(*plain), 60);
    EXPECT_GT(field(style), 120);
    EXPECT_LT(box(*plain), 60);
    EXPECT_GT(box(style), 120);
}

TEST(OutlineStyle, TheOptionKeepsItsPalette)
{
    const OutlineStyle style(QStyleFactory::create("fusion"));
    QStyleOptionFrame option;
    option.lineWidth = 1;
    lightest(option, [&](const QStyleOptionFrame* o, QPainter* painter) {
        style.drawPrimitive(QStyle::PE_PanelLineEdit, o, painter, nullptr);
    });
    EXPECT_EQ(option.palette, blackDesktop());
}

TEST(OutlineStyle, DisabledTextsAreLiftedWhereTheyWouldVanishAndElsewhereLeft)
{
    const QPalette before = QApplication::palette();
    OviAPI::liftDisabledTexts();
    EXPECT_EQ(QApplication::palette(), before);

    QApplication::setPalette(blackDesktop());
    OviAPI::liftDisabledTexts();
    const QPalette lifted = QApplication::palette();
    QApplication::setPalette(before);
    for (const auto role : {QPalette::WindowText, QPalette::ButtonText, QPalette::Text}) {
        EXPECT_GE(lifted.color(QPalette::Disabled, role).lightness(), 100);
        EXPECT_EQ(lifted.color(QPalette::Active, role), QColor(Qt::white));
    }
}
