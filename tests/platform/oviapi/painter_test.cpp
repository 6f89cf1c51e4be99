#include <oviapi/painter.h>

#include <chrono>
#include <climits>
#include <functional>
#include <optional>

#include <QFontInfo>
#include <QWidget>

#include <gtest/gtest.h>

#include <oviapi/paintdevice.h>
#include <oviapi/palette.h>
#include <oviapi/picture.h>
#include <oviapi/resourcemanager.h>
#include <oviapi/text.h>

#include "drawing_support.h"
#include "platform/oviapi/qt/convert.h"
#include "platform/oviapi/qt/paintdevice.h"

using namespace OviAPI;

namespace {

constexpr uint32_t white = 0xFFFFFFFF;
constexpr uint32_t red = 0xFFFF0000;
constexpr uint32_t black = 0xFF000000;

// A white picture and a painter on it.
struct Sheet {
    explicit Sheet(int width = 40, int height = 40, double ratio = 1.0)
        : picture({width, height}, Color::White, ratio)
        , device(picture)
        , painter(device)
    {
        painter.setPen(Pen(Color::Red));
    }

    // Number of device pixels that are not white, in device pixels of the whole sheet.
    int marked() const
    {
        const QImage image = toQImage(picture, 99);
        int count = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                count += image.pixel(x, y) != white;
        }
        return count;
    }
    uint32_t devicePixel(int x, int y) const { return toQImage(picture, 99).pixel(x, y); }
    QRect markedRect() const
    {
        const QImage image = toQImage(picture, 99);
        QRect rect;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                rect |= image.pixel(x, y) != white ? QRect(x, y, 1, 1) : QRect();
        }
        return rect;
    }

    Picture picture;
    PaintDevice device;
    Painter painter;
};

class PaintedWidget : public QWidget {
public:
    std::function<void(PaintDevice&)> paint;
    int paints = 0;

protected:
    void paintEvent(QPaintEvent*) override
    {
        ++paints;
        PaintSession session(this);
        if (paint)
            paint(session.device());
    }
};

TEST(Painter, OnANullDeviceIsNotValidAndDoesNothing)
{
    PaintDevice null;
    Picture nullPicture;
    PaintDevice ofNull(nullPicture);
    for (PaintDevice* device : {static_cast<PaintDevice*>(nullptr), &null, &ofNull}) {
        Painter painter(device);
        EXPECT_FALSE(painter.valid());
        EXPECT_FALSE(painter);
        painter.setFont(Font(L"Helvetica", 10));
        painter.setPen(Pen(Color::Red));
        painter.save();
        painter.restore();
        painter.setClipRect({0, 0, 5, 5});
        painter.drawLine(0, 0, 5, 5);
        painter.drawRect({0, 0, 5, 5});
        painter.drawEllipse({0, 0, 5, 5});
        painter.fillRect(0, 0, 5, 5);
        painter.drawText(0, 0, L"text");
        painter.drawText({0, 0, 5, 5}, L"text", TextCenter);
        painter.drawPolyline({});
        Draw3DRisedBox(painter, {0, 0, 5, 5}, {}, true);
        EXPECT_EQ(painter.getTextRect(3, 4, L"text"), Rect{});
        EXPECT_EQ(painter.getMaxCharWidth(), 0);
        EXPECT_EQ(painter.getTextHeight(), 0);
        EXPECT_EQ(painter.clipRect(), Rect{});
        EXPECT_EQ(painter.elidedText(L"text", 1), L"text");
        EXPECT_EQ(qtPainter(painter), nullptr);
    }
    EXPECT_TRUE(null.isNull());
    EXPECT_EQ(null.size(), Size{});
}

TEST(Painter, OnAPictureDraws)
{
    Sheet sheet;
    ASSERT_TRUE(sheet.painter.valid());
    EXPECT_FALSE(sheet.device.measuresOnly());
    EXPECT_EQ(sheet.device.size(), (Size{40, 40}));
    EXPECT_EQ(sheet.device.clipRect(), (Rect{0, 0, 40, 40}));
    sheet.painter.fillRect({1, 2, 4, 6}, Color::Red);
    EXPECT_EQ(sheet.marked(), 12);
    EXPECT_EQ(sheet.picture.pixel(1, 2), red);
    EXPECT_EQ(sheet.picture.pixel(3, 5), red);
}

TEST(Painter, APictureIsDrawnOnByOneDeviceAtATime)
{
    Picture picture({4, 4}, Color::White);
    std::optional<PaintDevice> first(std::in_place, picture);
    EXPECT_TRUE(PaintDevice(picture).isNull());
    first.reset();
    EXPECT_FALSE(PaintDevice(picture).isNull());
}

TEST(Painter, AHairlineIncludesBothEnds)
{
    Sheet sheet;
    sheet.painter.drawLine(3, 5, 9, 5);
    EXPECT_EQ(sheet.markedRect(), QRect(3, 5, 7, 1));
    sheet.painter.drawLine(20, 9, 20, 3);
    EXPECT_EQ(sheet.picture.pixel(20, 9), red);
    EXPECT_EQ(sheet.picture.pixel(20, 3), red);
    EXPECT_EQ(sheet.marked(), 14);
    sheet.painter.drawLine(30, 30, 30, 30);
    EXPECT_EQ(sheet.marked(), 15);
}

TEST(Painter, ASlantedHairlineIncludesBothEnds)
{
    Sheet sheet;
    sheet.painter.drawLine(3, 3, 9, 7);
    EXPECT_EQ(sheet.markedRect(), QRect(3, 3, 7, 5));
    EXPECT_EQ(sheet.marked(), 7);
    EXPECT_EQ(sheet.picture.pixel(3, 3), red);
    EXPECT_EQ(sheet.picture.pixel(9, 7), red);
}

TEST(Painter, AWidePenCoversItsWidthAroundTheLine)
{
    Sheet sheet;
    sheet.painter.setPen(Pen(Color::Red, 2));
    sheet.painter.drawLine(5, 10, 14, 10);
    EXPECT_EQ(sheet.markedRect(), QRect(5, 9, 10, 2));
    sheet.painter.setPen(Pen(Color::Red, 3));
    sheet.painter.drawLine(30, 20, 30, 29);
    EXPECT_EQ(sheet.picture.pixel(29, 20), red);
    EXPECT_EQ(sheet.picture.pixel(31, 29), red);
    EXPECT_EQ(sheet.picture.pixel(32, 29), white);
    EXPECT_EQ(sheet.marked(), 50);
}

TEST(Painter, HairlinesAreOneWidthAtEveryScale)
{
    const std::pair<double, int> widths[] = {{1.0, 1}, {1.25, 1}, {1.5, 1}, {2.0, 2}, {3.0, 3}};
    for (const auto& [ratio, width] : widths) {
        for (int at = 0; at < 8; ++at) {
            Sheet sheet(40, 40, ratio);
            sheet.painter.drawLine(at, 0, at, 39);
            const QRect line = sheet.markedRect();
            EXPECT_EQ(line.width(), width) << ratio << " " << at;
            EXPECT_EQ(line.height(), static_cast<int>(40 * ratio)) << ratio << " " << at;
            EXPECT_EQ(sheet.marked(), line.width() * line.height()) << ratio << " " << at;
        }
    }
}

TEST(Painter, AtTwiceTheResolutionShapesHaveTwiceTheDevicePixels)
{
    Sheet sheet(40, 40, 2.0);
    EXPECT_EQ(sheet.device.size(), (Size{40, 40}));
    EXPECT_DOUBLE_EQ(sheet.painter.pixelRatio(), 2.0);
    sheet.painter.fillRect({3, 4, 5, 8}, Color::Red);
    EXPECT_EQ(sheet.markedRect(), QRect(6, 8, 4, 8));
    Sheet text(40, 40, 2.0);
    text.painter.setFont(Font(L"Helvetica", 10));
    const Rect one = text.painter.getTextRect(5, 5, L"M");
    text.painter.drawText(5, 5, L"M");
    EXPECT_TRUE(
        QRect(10, 10, 2 * static_cast<int>(one.width()) + 1, 2 * static_cast<int>(one.height()))
            .contains(text.markedRect()));
    EXPECT_GT(text.markedRect().height(), 14);
}

TEST(Painter, AreasSideBySideLeaveNoGapAtFractionalScales)
{
    for (const double ratio : {1.25, 1.5, 1.75}) {
        Sheet sheet(40, 4, ratio);
        for (int x = 0; x < 40; x += 3)
            sheet.painter.fillRect({x, 0, x + 3, 4}, Color::Red);
        const int all = static_cast<int>(40 * ratio) * static_cast<int>(4 * ratio);
        EXPECT_EQ(sheet.marked(), all) << ratio;
    }
}

TEST(Painter, ARectanglesOutlineLiesInsideIt)
{
    Sheet sheet;
    sheet.painter.setBrush(Brush(Color::Blue));
    sheet.painter.drawRect({5, 6, 15, 12});
    EXPECT_EQ(sheet.markedRect(), QRect(5, 6, 10, 6));
    EXPECT_EQ(sheet.picture.pixel(5, 6), red);
    EXPECT_EQ(sheet.picture.pixel(14, 11), red);
    EXPECT_EQ(sheet.picture.pixel(6, 7), 0xFF0000FFU);
    sheet.painter.drawRect({20, 20, 20, 30});
    EXPECT_EQ(sheet.marked(), 60);
}

TEST(Painter, AnOutlineWithoutABrushFillsNothing)
{
    Sheet sheet;
    sheet.painter.drawRect({5, 5, 15, 15});
    EXPECT_EQ(sheet.marked(), 36);
    EXPECT_EQ(sheet.picture.pixel(9, 9), white);
}

TEST(Painter, AnEllipseStaysInsideItsRectangle)
{
    for (const bool smooth : {false, true}) {
        Sheet sheet;
        sheet.painter.setSmooth(smooth);
        sheet.painter.setBrush(Brush(Color::Red));
        sheet.painter.drawEllipse({10, 10, 19, 17});
        EXPECT_EQ(sheet.markedRect(), QRect(10, 10, 9, 7)) << smooth;
        EXPECT_EQ(sheet.picture.pixel(14, 13), red);
        EXPECT_NE(sheet.picture.pixel(10, 10), red);
    }
}

TEST(Painter, APenOfNoStyleDrawsNoOutline)
{
    Sheet sheet;
    sheet.painter.setPen(Pen(Color::Red, 1, Pen::None));
    const Point points[] = {{0, 0}, {9, 9}, {20, 3}};
    sheet.painter.drawLine(0, 0, 9, 0);
    sheet.painter.drawPolyline(points);
    sheet.painter.drawRect({5, 5, 15, 15});
    EXPECT_EQ(sheet.marked(), 0);
}

TEST(Painter, EveryStyleLeavesADifferentTrace)
{
    std::vector<int> traces;
    for (const Pen::Style style :
         {Pen::Solid, Pen::Dash, Pen::Dot, Pen::DashDot, Pen::DashDotDot, Pen::Fine}) {
        Sheet sheet(400, 3);
        sheet.painter.setPen(Pen(Color::Red, 1, style));
        sheet.painter.drawLine(0, 1, 399, 1);
        traces.push_back(sheet.marked());
    }
    EXPECT_EQ(traces[0], 400);
    EXPECT_NEAR(traces[5], 200, 2);
    std::sort(traces.begin(), traces.end());
    EXPECT_EQ(std::adjacent_find(traces.begin(), traces.end()), traces.end());
}

TEST(Painter, AStyleOutsideTheListDrawsSolid)
{
    Sheet sheet;
    sheet.painter.setPen(Pen(Color::Red, INT_MIN, static_cast<Pen::Style>(99)));
    sheet.painter.drawLine(0, 0, 9, 0);
    EXPECT_EQ(sheet.marked(), 10);
}

TEST(Painter, DashesRunOnFromSegmentToSegment)
{
    Sheet whole(400, 3);
    Sheet pieces(400, 3);
    std::vector<Point> points;
    for (int x = 0; x < 400; ++x)
        points.push_back({x, 1});
    for (Sheet* sheet : {&whole, &pieces})
        sheet->painter.setPen(Pen(Color::Red, 1, Pen::Dash));
    whole.painter.drawLine(0, 1, 399, 1);
    pieces.painter.drawPolyline(points);
    EXPECT_GT(whole.marked(), 200);
    EXPECT_NEAR(pieces.marked(), whole.marked(), 40);
}

TEST(Painter, APolylineJoinsItsPoints)
{
    Sheet sheet;
    const Point points[] = {{2, 2}, {10, 2}, {10, 8}};
    sheet.painter.drawPolyline(points);
    EXPECT_EQ(sheet.marked(), 15);
    sheet.painter.drawPolyline({points, 1});
    EXPECT_EQ(sheet.marked(), 15);
}

TEST(Painter, ADensePolylineOfAWidePenIsDrawnInATimeThatGrowsWithItsPoints)
{
    std::vector<Point> points;
    for (int i = 0; i < 5000; ++i)
        points.push_back({i % 600, i * 7919 % 300});
    for (const Pen::Style style : {Pen::Solid, Pen::Dash}) {
        Sheet sheet(600, 300);
        sheet.painter.setPen(Pen(Color::Red, 2, style));
        const auto start = std::chrono::steady_clock::now();
        sheet.painter.drawPolyline(points);
        const auto time = std::chrono::steady_clock::now() - start;
        // As one outline it takes over 10 s.
        EXPECT_LT(time, std::chrono::seconds(3)) << style;
        EXPECT_GT(sheet.marked(), 50'000);
        RecordProperty("milliseconds", static_cast<int>(time / std::chrono::milliseconds(1)));
    }
}

TEST(Painter, CoordinatesAtTheEndsOfTheRangeAreCut)
{
    Sheet sheet;
    const Point points[] = {{INT_MIN, 20}, {INT_MAX, 20}, {20, INT_MAX}, {20, INT_MIN}};
    sheet.painter.drawLine(INT_MIN, 5, INT_MAX, 5);
    EXPECT_EQ(sheet.marked(), 40);
    sheet.painter.drawLine(INT_MIN, INT_MIN, INT_MAX, INT_MAX);
    EXPECT_EQ(sheet.picture.pixel(20, 20), red);
    sheet.painter.drawPolyline(points);
    sheet.painter.drawRect({INT_MIN, INT_MIN, INT_MAX, INT_MAX});
    sheet.painter.drawEllipse({INT_MIN, INT_MIN, INT_MAX, INT_MAX});
    sheet.painter.drawText(INT_MAX, INT_MAX, L"text");
    sheet.painter.drawText({INT_MIN, INT_MIN, INT_MAX, INT_MAX}, L"text", TextCenter);
    sheet.painter.setClipRect({INT_MIN, INT_MIN, INT_MAX, INT_MAX});
    sheet.painter.fillRect({INT_MIN, INT_MIN, INT_MAX, INT_MAX}, Color::Red);
    EXPECT_GE(sheet.marked(), 39 * 39);
}

TEST(Painter, AHatchedBrushLeavesPartOfTheGround)
{
    for (int hatch = Brush::Horizontal; hatch <= Brush::DiagonalCross; ++hatch) {
        Sheet sheet;
        sheet.painter.fillRect({0, 0, 40, 40},
                               Brush(Color::Red, static_cast<Brush::HatchStyle>(hatch)));
        EXPECT_GT(sheet.marked(), 100) << hatch;
        EXPECT_LT(sheet.marked(), 1500) << hatch;
    }
    Sheet sheet;
    sheet.painter.fillRect({0, 0, 40, 40}, Brush(Color::Red, static_cast<Brush::HatchStyle>(99)));
    EXPECT_EQ(sheet.marked(), 1600);
}

TEST(Painter, HatchingGrowsWithTheResolution)
{
    const auto rowsOf = [](double ratio) {
        Sheet sheet(40, 40, ratio);
        sheet.painter.fillRect({0, 0, 40, 40}, Brush(Color::Red, Brush::Horizontal));
        return sheet.marked() / (40 * ratio);
    };
    EXPECT_EQ(rowsOf(1.0), 5);  // one row of device pixels each
    EXPECT_EQ(rowsOf(2.0), 10); // two
}

TEST(Painter, DiagonalsFallAndRise)
{
    Sheet sheet;
    sheet.painter.fillRect({0, 0, 16, 16}, Brush(Color::Red, Brush::ForwardDiagonal));
    sheet.painter.fillRect({16, 0, 32, 16}, Brush(Color::Red, Brush::BackwardDiagonal));
    EXPECT_EQ(sheet.picture.pixel(3, 3), red);
    EXPECT_EQ(sheet.picture.pixel(3, 4), white);
    EXPECT_EQ(sheet.picture.pixel(4, 4), red);
    EXPECT_EQ(sheet.picture.pixel(16 + 5, 3), red);
    EXPECT_EQ(sheet.picture.pixel(16 + 4, 4), red);
    EXPECT_EQ(sheet.picture.pixel(16 + 4, 3), white);
}

TEST(Painter, FillRectByNumbersUsesTheBrushAndTakesASize)
{
    Sheet sheet;
    sheet.painter.fillRect(2, 2, 10, 4);
    EXPECT_EQ(sheet.marked(), 0);
    sheet.painter.setBrush(Brush(Color::Red));
    sheet.painter.fillRect(2, 2, 10, 4);
    EXPECT_EQ(sheet.markedRect(), QRect(2, 2, 10, 4));
    sheet.painter.fillRect(20, 20, -5, 4);
    EXPECT_EQ(sheet.marked(), 40);
}

TEST(Painter, DrawsInsideItsClipOnly)
{
    Sheet sheet;
    sheet.painter.setClipRect({5, 5, 10, 8});
    EXPECT_EQ(sheet.painter.clipRect(), (Rect{5, 5, 10, 8}));
    sheet.painter.fillRect({0, 0, 40, 40}, Color::Red);
    EXPECT_EQ(sheet.marked(), 15);
    sheet.painter.clearClipRect();
    EXPECT_EQ(sheet.painter.clipRect(), (Rect{0, 0, 40, 40}));
    sheet.painter.fillRect({0, 0, 1, 1}, Color::Red);
    EXPECT_EQ(sheet.marked(), 16);
}

TEST(Painter, SaveAndRestoreKeepEverything)
{
    Sheet sheet;
    const Font font(L"Helvetica", 12);
    sheet.painter.setFont(font);
    sheet.painter.setBrush(Brush(Color::Red));
    sheet.painter.setTextColor(Color::Blue);
    sheet.painter.save();
    sheet.painter.setFont(Font(L"Courier", 30));
    sheet.painter.setPen(Pen(Color::Green, 5));
    sheet.painter.setBrush(Brush());
    sheet.painter.setTextColor(Color::Green);
    sheet.painter.setBackgroundColor(Color::Green);
    sheet.painter.setClipRect({0, 0, 1, 1});
    sheet.painter.restore();
    EXPECT_EQ(sheet.painter.font(), font);
    EXPECT_EQ(sheet.painter.pen(), Pen(Color::Red));
    EXPECT_EQ(sheet.painter.brush(), Brush(Color::Red));
    EXPECT_EQ(sheet.painter.textColor(), Color::Blue);
    EXPECT_EQ(sheet.painter.clipRect(), (Rect{0, 0, 40, 40}));
    sheet.painter.restore();
    EXPECT_EQ(sheet.painter.font(), font);
    sheet.painter.fillRect({2, 2, 4, 4}, Color::Red);
    EXPECT_EQ(sheet.marked(), 4);
}

TEST(Painter, TwoPaintersOnOneDeviceKeepTheirStatesApart)
{
    Sheet sheet;
    sheet.painter.setClipRect({0, 0, 10, 10});
    Painter second(sheet.device);
    sheet.painter.fillRect({0, 0, 40, 1}, Color::Red);
    second.fillRect({0, 1, 40, 2}, Color::Red);
    sheet.painter.fillRect({0, 2, 40, 3}, Color::Red);
    EXPECT_EQ(sheet.marked(), 10 + 40 + 10);
}

// Text

TEST(PainterText, HelveticaIsMeasuredAsItsMetricTwin)
{
    Sheet sheet;
    const QString family = QFontInfo(toQFont(Font(L"Helvetica", 10))).family();
    ASSERT_TRUE(family.startsWith(QStringLiteral("Nimbus Sans")))
        << "the package fonts-urw-base35 is not installed; " << family.toStdString() << " serves";
    sheet.painter.setFont(Font(L"Helvetica", 10));
    EXPECT_EQ(sheet.painter.getTextRect(0, 0, L"0"), (Rect{0, 0, 7, 18}));
    EXPECT_EQ(sheet.painter.getTextHeight(), 18);
    EXPECT_EQ(GetTextSize(sheet.painter, L"0"), (Size{7, 18}));
    EXPECT_EQ(GetTextSize(Font(L"Helvetica", 10), L"0"), (Size{7, 18}));
}

TEST(PainterText, IsMeasuredAtItsPointAndUpToACount)
{
    Sheet sheet;
    sheet.painter.setFont(Font(L"Helvetica", 10));
    EXPECT_EQ(sheet.painter.getTextRect(5, 6, L"0"), (Rect{5, 6, 12, 24}));
    const Rect three = sheet.painter.getTextRect(0, 0, L"000", -1);
    EXPECT_GT(three.right, 20);
    EXPECT_EQ(sheet.painter.getTextRect(0, 0, L"000", 99), three);
    EXPECT_EQ(sheet.painter.getTextRect(0, 0, L"000", 1), sheet.painter.getTextRect(0, 0, L"0"));
    EXPECT_EQ(sheet.painter.getTextRect(0, 0, L"000", 0), (Rect{0, 0, 0, 18}));
    EXPECT_EQ(sheet.painter.getTextRect(0, 0, L""), (Rect{0, 0, 0, 18}));
}

TEST(PainterText, OfSeveralLinesIsAsWideAsTheWidest)
{
    Sheet sheet;
    sheet.painter.setFont(Font(L"Helvetica", 10));
    const Rect rect = sheet.painter.getTextRect(0, 0, L"0\n000\n0");
    EXPECT_EQ(rect.right, sheet.painter.getTextRect(0, 0, L"000").right);
    EXPECT_GE(rect.bottom, 3 * 18);
}

TEST(PainterText, HangsFromItsPoint)
{
    Sheet sheet(100, 60);
    sheet.painter.setTextColor(Color::Red);
    sheet.painter.setFont(Font(L"Helvetica", 10));
    sheet.painter.drawText(10, 20, L"Mjg");
    const Rect rect = sheet.painter.getTextRect(10, 20, L"Mjg");
    const QRect marked = sheet.markedRect();
    EXPECT_FALSE(marked.isNull());
    EXPECT_TRUE(toQRect(rect).adjusted(-1, 0, 1, 0).contains(marked));
    EXPECT_GT(marked.top(), 20);
}

TEST(PainterText, DrawsNoMoreThanItsCount)
{
    Sheet one(100, 40);
    Sheet counted(100, 40);
    one.painter.drawText(5, 5, L"MM");
    counted.painter.drawText(5, 5, L"MMMMM", 2);
    EXPECT_EQ(one.markedRect(), counted.markedRect());
}

TEST(PainterText, StandsWhereItsFlagsSay)
{
    const auto markedWith = [](uint32_t flags) {
        Sheet sheet(100, 60);
        sheet.painter.setFont(Font(L"Helvetica", 10));
        sheet.painter.drawText({0, 0, 100, 60}, L"00", flags);
        return sheet.markedRect();
    };
    EXPECT_LT(markedWith(TextLeft | TextTop).right(), 20);
    EXPECT_LT(markedWith(TextLeft | TextTop).bottom(), 20);
    EXPECT_NEAR(markedWith(TextCenter).center().x(), 50, 2);
    EXPECT_GT(markedWith(TextRight).left(), 80);
    EXPECT_NEAR(markedWith(TextVCenter).center().y(), 30, 4);
    EXPECT_GT(markedWith(TextBottom).top(), 40);
}

TEST(PainterText, InARectangleIsClippedToIt)
{
    Sheet sheet(100, 40);
    sheet.painter.drawText({10, 5, 30, 12}, L"MMMMMMMMMM", TextLeft);
    EXPECT_TRUE(QRect(10, 5, 20, 7).contains(sheet.markedRect()));
    sheet.painter.fillRect({50, 30, 51, 31}, Color::Red);
    EXPECT_EQ(sheet.picture.pixel(50, 30), red);
}

TEST(PainterText, ThatIsTooWideEndsInAnEllipsis)
{
    Sheet sheet(100, 40);
    sheet.painter.setFont(Font(L"Helvetica", 10));
    const std::wstring cut = sheet.painter.elidedText(L"a very long text indeed", 60);
    EXPECT_EQ(cut.back(), L'\u2026');
    EXPECT_LE(sheet.painter.getTextRect(0, 0, cut).right, 60);
    EXPECT_EQ(sheet.painter.elidedText(L"short", 60), L"short");
    Sheet clipped(100, 40);
    clipped.painter.setFont(Font(L"Helvetica", 10));
    sheet.painter.drawText({0, 0, 60, 20}, L"a very long text indeed", TextElide);
    clipped.painter.drawText({0, 0, 60, 20}, cut, TextSingleLine);
    EXPECT_EQ(sheet.markedRect(), clipped.markedRect());
}

TEST(PainterText, OfOneLineShowsLineEndsAsSpaces)
{
    Sheet single(100, 60);
    single.painter.drawText({0, 0, 100, 60}, L"0\n0", TextSingleLine);
    Sheet lines(100, 60);
    lines.painter.drawText({0, 0, 100, 60}, L"0\n0", TextLeft);
    EXPECT_GT(lines.markedRect().height(), single.markedRect().height() + 10);
    Sheet elided(100, 60);
    elided.painter.drawText({0, 0, 100, 60}, L"0\n0", TextElide);
    EXPECT_EQ(elided.markedRect(), single.markedRect());
}

TEST(PainterText, WrapsWhereItIsAllowedTo)
{
    Sheet plain(60, 80);
    plain.painter.drawText({0, 0, 60, 80}, L"one two three four", TextLeft);
    Sheet wrapped(60, 80);
    wrapped.painter.drawText({0, 0, 60, 80}, L"one two three four", TextWordWrap);
    EXPECT_GT(wrapped.markedRect().height(), plain.markedRect().height() + 10);
}

TEST(PainterText, TakesAnAmpersandAsACharacter)
{
    Sheet sheet(100, 40);
    Sheet plain(100, 40);
    sheet.painter.drawText({0, 0, 100, 40}, L"0&0", TextLeft);
    plain.painter.drawText({0, 0, 100, 40}, L"00", TextLeft);
    EXPECT_GT(sheet.markedRect().width(), plain.markedRect().width() + 5);
}

TEST(PainterText, IsDrawnOnItsBackgroundColor)
{
    Sheet sheet(100, 40);
    sheet.painter.setFont(Font(L"Helvetica", 10));
    sheet.painter.setBackgroundColor(Color::Red);
    sheet.painter.drawText(10, 10, L"0");
    EXPECT_EQ(sheet.markedRect(), QRect(10, 10, 7, 18));
    sheet.painter.clearBackgroundColor();
    sheet.painter.drawText(50, 10, L"0");
    EXPECT_EQ(sheet.picture.pixel(50, 10), white);
    sheet.painter.setBackgroundColor(Color::Red);
    sheet.painter.drawText({70, 0, 100, 40}, L"0", TextRight | TextBottom);
    EXPECT_EQ(sheet.picture.pixel(99, 39), red);
    EXPECT_EQ(sheet.picture.pixel(71, 39), white);
}

TEST(PainterText, MaxCharWidthIsThatOfTheWidestLetter)
{
    Sheet sheet;
    sheet.painter.setFont(Font(L"Helvetica", 10));
    const int widest = sheet.painter.getMaxCharWidth();
    for (const wchar_t c : std::wstring(L"MWmw0@"))
        EXPECT_GE(widest, sheet.painter.getTextRect(0, 0, std::wstring(1, c)).right);
    EXPECT_LE(widest, 18);
    sheet.painter.setFont(Font(L"Courier", 10));
    EXPECT_EQ(sheet.painter.getMaxCharWidth(), sheet.painter.getTextRect(0, 0, L"i").right);
}

TEST(PainterText, AHugeFontIsLimitedAndDrawnInTime)
{
    Sheet sheet(100, 100);
    sheet.painter.setFont(Font(L"Helvetica", INT_MAX));
    const auto start = std::chrono::steady_clock::now();
    sheet.painter.drawText(0, 0, L"MMMM");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    EXPECT_LT(sheet.painter.getTextHeight(), 1000);
}

// Windows

TEST(PainterOnAWindow, DrawsInItsPaintEventAndIsNotValidAfterwards)
{
    PaintedWidget widget;
    widget.resize(20, 10);
    std::unique_ptr<Painter> kept;
    widget.paint = [&](PaintDevice& device) {
        EXPECT_FALSE(device.measuresOnly());
        EXPECT_EQ(device.clipRect(), (Rect{0, 0, 20, 10}));
        kept = std::make_unique<Painter>(device);
        EXPECT_TRUE(kept->valid());
        kept->fillRect({0, 0, 5, 10}, Color::Red);
    };
    const QImage image = widget.grab().toImage();
    EXPECT_EQ(image.pixel(4, 9), red);
    EXPECT_NE(image.pixel(5, 9), red);
    ASSERT_TRUE(kept);
    EXPECT_FALSE(kept->valid());
    kept->fillRect({0, 0, 5, 5}, Color::Red);
    EXPECT_EQ(kept->getTextRect(0, 0, L"0"), Rect{});
}

TEST(PainterOnAWindow, OutsideThePaintEventMeasuresAndAsksForARepaint)
{
    PaintedWidget widget;
    widget.resize(20, 10);
    widget.show();
    QApplication::processEvents();
    const int before = widget.paints;
    PaintDevice device = clientDevice(&widget);
    EXPECT_TRUE(device.measuresOnly());
    {
        Painter painter(device);
        ASSERT_TRUE(painter.valid());
        painter.setFont(Font(L"Helvetica", 10));
        EXPECT_EQ(painter.getTextRect(0, 0, L"0").right, 7);
        QApplication::processEvents();
        EXPECT_EQ(widget.paints, before);
        painter.fillRect({0, 0, 5, 5}, Color::Red);
        painter.drawLine(0, 0, 5, 5);
    }
    QApplication::processEvents();
    EXPECT_EQ(widget.paints, before + 1);
}

TEST(PainterOnAWindow, OnItsClientDeviceDrawsAtOnceInsideThePaintEvent)
{
    PaintedWidget widget;
    widget.resize(20, 10);
    widget.paint = [&](PaintDevice&) {
        PaintDevice client = clientDevice(&widget);
        EXPECT_FALSE(client.measuresOnly());
        Painter painter(client);
        painter.fillRect({0, 0, 20, 10}, Color::Red);
    };
    EXPECT_EQ(widget.grab().toImage().pixel(10, 5), red);
    widget.show();
    QApplication::processEvents();
    const int before = widget.paints;
    QApplication::processEvents();
    EXPECT_EQ(widget.paints, before);
}

TEST(PainterOnAWindow, StopsBeingValidWhenTheWindowIsDestroyed)
{
    auto widget = std::make_unique<PaintedWidget>();
    PaintDevice device = clientDevice(widget.get());
    Painter painter(device);
    EXPECT_TRUE(painter.valid());
    widget.reset();
    EXPECT_FALSE(painter.valid());
    painter.setFont(Font(L"Helvetica", 10));
    painter.drawText(0, 0, L"text");
    EXPECT_EQ(painter.getTextRect(0, 0, L"0"), Rect{});
    EXPECT_EQ(painter.clipRect(), Rect{});
    EXPECT_FALSE(Painter(device).valid());
    EXPECT_TRUE(clientDevice(nullptr).isNull());
}

TEST(PainterOnAWindow, StartsWithTheWindowsFont)
{
    PaintedWidget widget;
    widget.setFont(toQFont(Font(L"Helvetica", 20)));
    PaintDevice device = clientDevice(&widget);
    Painter painter(device);
    const int height = painter.getTextHeight();
    painter.setFont(Font(L"Helvetica", 10));
    EXPECT_LT(painter.getTextHeight(), height);
    painter.setFont(Font());
    EXPECT_EQ(painter.getTextHeight(), height);
}

TEST(PainterOnAWindow, WhatQtCodeChangesDoesNotLeakIntoTheNextCall)
{
    Sheet sheet;
    QPainter* qt = qtPainter(sheet.painter);
    ASSERT_NE(qt, nullptr);
    qt->setClipRect(0, 0, 1, 1);
    qt->translate(10, 10);
    sheet.painter.fillRect({0, 0, 5, 5}, Color::Red);
    EXPECT_EQ(sheet.markedRect(), QRect(0, 0, 5, 5));
}

// Boxes

TEST(RaisedBox, IsLightAboveAndShadedBelow)
{
    Sheet sheet;
    Draw3DRisedBox(sheet.painter, {5, 6, 25, 16}, {}, true);
    const auto opaque = [](ColorNumber number) { return 0xFF000000U | Color(number).rgb(); };
    EXPECT_EQ(sheet.picture.pixel(5, 6), opaque(ColorNumber::Light));
    EXPECT_EQ(sheet.picture.pixel(5, 14), opaque(ColorNumber::Light));
    EXPECT_EQ(sheet.picture.pixel(23, 6), opaque(ColorNumber::Light));
    EXPECT_EQ(sheet.picture.pixel(24, 6), opaque(ColorNumber::Shadow));
    EXPECT_EQ(sheet.picture.pixel(24, 15), opaque(ColorNumber::Shadow));
    EXPECT_EQ(sheet.picture.pixel(5, 15), opaque(ColorNumber::Shadow));
    EXPECT_EQ(sheet.picture.pixel(6, 7), opaque(ColorNumber::ButtonFace));
    EXPECT_EQ(sheet.picture.pixel(23, 14), opaque(ColorNumber::ButtonFace));
    EXPECT_EQ(sheet.picture.pixel(4, 6), white);
    EXPECT_EQ(sheet.picture.pixel(25, 6), white);
    EXPECT_EQ(sheet.picture.pixel(5, 16), white);
}

TEST(RaisedBox, WithoutFillLeavesItsInside)
{
    Sheet sheet;
    Draw3DRisedBox(sheet.painter, {5, 6, 25, 16}, {}, false);
    EXPECT_EQ(sheet.picture.pixel(6, 7), white);
    EXPECT_EQ(sheet.picture.pixel(24, 15), 0xFF000000U | Color(ColorNumber::Shadow).rgb());
}

TEST(RaisedBox, TakesTheBrushesItIsGiven)
{
    Sheet sheet;
    const BoxBrush brushes{Brush(Color::Red), Brush(Color::Black), Brush(Color::Red),
                           Brush(Color::Black)};
    Draw3DRisedBox(sheet.painter, {5, 6, 25, 16}, brushes, false);
    EXPECT_EQ(sheet.picture.pixel(5, 10), red);
    EXPECT_EQ(sheet.picture.pixel(10, 6), black);
    EXPECT_EQ(sheet.picture.pixel(24, 10), red);
    EXPECT_EQ(sheet.picture.pixel(10, 15), black);
    Draw3DRisedBox(sheet.painter, {30, 30, 30, 35}, brushes, true);
    EXPECT_EQ(sheet.picture.pixel(30, 30), white);
}

// Texts of the resources in the room that the forms give them, in Helvetica 10.

TEST(ResourceTexts, FitTheFixedRoomOfTheForms)
{
    const std::pair<int, int> rooms[] = {
        {60013, 80 - 16},    {60014, 80 - 16},       {60011, 80 - 16}, {60012, 80 - 16},
        {60203, 640 - 80},   {60221, 640 - 80 - 24}, {222106, 100},    {222107, 100},
        {222108, 70 - 12},   {222109, 70 - 12},      {2222181, 200},   {2222182, 70 - 12},
        {2222201, 120 - 16}, {2222180, 240 - 60}};
    const ResourceManager manager(utf8ToWide(TYPICAL_RRS).c_str());
    Sheet sheet;
    sheet.painter.setFont(Font(L"Helvetica", 10));
    for (const auto& [id, room] : rooms) {
        for (const int language : {1, 2}) {
            wchar_t text[4096];
            ASSERT_TRUE(manager.loadString(id, text, 4096, language)) << id;
            const Rect rect = sheet.painter.getTextRect(0, 0, text);
            EXPECT_LE(rect.right, room) << id << " " << language;
            EXPECT_LE(rect.bottom, 57) << id << " " << language;
        }
    }
}

TEST(ResourceTexts, TheCaptionsOfTheChartTabsFitSideBySide)
{
    const ResourceManager manager(utf8ToWide(TYPICAL_RRS).c_str());
    Sheet sheet;
    sheet.painter.setFont(Font(L"Helvetica", 10));
    for (const int language : {1, 2}) {
        int width = 0;
        for (const int id : {2222140, 2222141, 2222142, 2222143, 2222144, 2222172}) {
            wchar_t text[256];
            ASSERT_TRUE(manager.loadString(id, text, 256, language));
            width += sheet.painter.getTextRect(0, 0, text).right + 24;
        }
        EXPECT_LE(width, 500) << language;
    }
}

} // namespace
