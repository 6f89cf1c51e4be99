#include "platform/oviapi/qt/convert.h"

#include <climits>

#include <QFontInfo>

#include <gtest/gtest.h>

#include "drawing_support.h"

using namespace OviAPI;

namespace {

TEST(Convert, TextGoesBothWays)
{
    const std::wstring text = L"a\u0416\U0001F600\0z";
    EXPECT_EQ(fromQString(toQString(text)), text);
    EXPECT_EQ(toQString(L"\U0001F600").size(), 2);
    EXPECT_TRUE(toQString(L"").isEmpty());
}

TEST(Convert, ALoneSurrogateBecomesAReplacementCharacter)
{
    EXPECT_EQ(toQString(std::wstring(1, wchar_t{0xD800})), QString(QChar(0xFFFD)));
    EXPECT_EQ(fromQString(QString(QChar(0xDC00))), L"\uFFFD");
}

TEST(Convert, FontSizesAreLimited)
{
    EXPECT_EQ(toQFont(Font(L"Helvetica", 10)).pointSize(), 10);
    EXPECT_EQ(toQFont(Font(L"Helvetica", -5)).pointSize(), 1);
    EXPECT_EQ(toQFont(Font(L"Helvetica", INT_MIN)).pointSize(), 1);
    EXPECT_EQ(toQFont(Font(L"Helvetica", INT_MAX)).pointSize(), 400);
    EXPECT_EQ(toQFont(Font(L"Helvetica", 400)).pointSize(), 400);
}

TEST(Convert, AnEmptyFontIsTheBase)
{
    const QFont base(QStringLiteral("Courier"), 17);
    EXPECT_EQ(toQFont(Font(), base), base);
    EXPECT_EQ(toQFont(Font()), QApplication::font());
    EXPECT_EQ(toQFont(Font(L"", 12), base).pointSize(), 12);
    EXPECT_EQ(toQFont(Font(L"", 12), base).family(), QStringLiteral("Courier"));
    EXPECT_EQ(toQFont(Font(L"Helvetica", 0), base).pointSize(), 17);
}

TEST(Convert, FontsKeepTheirStyle)
{
    const Font font(L"Helvetica", 11, true, true, true, true);
    EXPECT_EQ(fromQFont(toQFont(font)), font);
    const Font plain(L"Times", 9);
    EXPECT_EQ(fromQFont(toQFont(plain)), plain);
}

TEST(Convert, AFaceThatIsNotInstalledIsReplacedAndKeepsItsName)
{
    const QFont font = toQFont(Font(L"No Such Face At All", 10));
    EXPECT_FALSE(QFontInfo(font).family().isEmpty());
    EXPECT_NE(QFontInfo(font).family(), QStringLiteral("No Such Face At All"));
    EXPECT_EQ(fromQFont(font).name(), L"No Such Face At All");
}

TEST(Convert, ColorsGoBothWays)
{
    EXPECT_EQ(fromQColor(toQColor(Color(1, 2, 3))), Color(1, 2, 3));
    EXPECT_EQ(toQColor(Color(1, 2, 3)).alpha(), 255);
    EXPECT_EQ(toQColor(Color(6)), QApplication::palette().color(QPalette::Base));
}

TEST(Convert, RectanglesAreCutToWhatFits)
{
    EXPECT_EQ(toQRect({1, 2, 4, 7}), QRect(1, 2, 3, 5));
    EXPECT_EQ(fromQRect(QRect(1, 2, 3, 5)), (Rect{1, 2, 4, 7}));
    EXPECT_TRUE(toQRect({5, 5, 1, 1}).isEmpty());
    EXPECT_EQ(toQRect({INT_MIN, 0, INT_MAX, 1}).width(), INT_MAX);
}

TEST(Convert, AnIconHoldsEveryResolution)
{
    Picture picture({16, 16}, Color::Red);
    ASSERT_TRUE(picture.addVariant(Picture({16, 16}, Color::Blue, 2.0)));
    const QIcon icon = toQIcon(picture);
    EXPECT_EQ(icon.availableSizes().size(), 2);
    EXPECT_TRUE(toQIcon(Picture()).isNull());
}

} // namespace
