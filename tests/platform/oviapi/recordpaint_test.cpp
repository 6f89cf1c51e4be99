// What stands on the screen itself: the window's pixels, not a picture that is painted anew.
#include <QAbstractScrollArea>
#include <QApplication>
#include <QBackingStore>
#include <QEvent>
#include <QImage>
#include <QPainter>
#include <QScrollBar>
#include <QWidget>

#include "recordview_support.h"

using namespace OviAPI;

namespace {

class RecordPaint : public RecordViewTest {
protected:
    QWidget* window() const
    {
        for (QWidget* each : QApplication::topLevelWidgets())
            if (each->isVisible())
                return each;
        return nullptr;
    }
    QWidget* surface() const
    {
        return window()->findChild<QWidget*>(QStringLiteral("qt_scrollarea_viewport"));
    }
    QImage screen()
    {
        UiDriver::processEvents();
        const QImage all = *static_cast<QImage*>(window()->backingStore()->paintDevice());
        const double ratio = all.devicePixelRatio();
        const QPoint at = surface()->mapTo(window(), QPoint(0, 0));
        return all.copy(QRect(at * ratio, surface()->size() * ratio));
    }
    // A view of one text column, without the focus frame on what is looked at.
    void showTexts(const std::vector<std::wstring>& texts)
    {
        data.AddColDef(new aCColumn(L"text", 1, 1000, L"Text", 0, 0, 0));
        for (const std::wstring& text : texts)
            ASSERT_EQ(data.AppendTexts({text.c_str()}), TextFault::None);
        ASSERT_EQ(data.AppendTexts({L"focus"}), TextFault::None);
        show(data);
        view.SetColWidth(1, 300);
        view.SetFocusCell(1, static_cast<long>(texts.size()) + 1);
    }
    // The cell of a row as the toolkit draws text.
    QImage drawnByToolkit(const QImage& like, const QString& text) const
    {
        QImage image(like.size(), like.format());
        image.setDevicePixelRatio(like.devicePixelRatio());
        image.fill(surface()->palette().color(QPalette::Inactive, QPalette::Base));
        QPainter painter(&image);
        painter.setFont(surface()->font());
        painter.setPen(surface()->palette().color(QPalette::Text));
        const QFontMetrics metrics(surface()->font());
        const int height = metrics.ascent() + metrics.descent();
        painter.drawText(QPointF(4, (row - height) / 2 + metrics.ascent()), text);
        return image;
    }
    QImage cellOnScreen(long line)
    {
        Rect rect;
        EXPECT_TRUE(view.GetClientCellRect(1, line, rect));
        const QImage all = screen();
        const double ratio = all.devicePixelRatio();
        // Without the lines between cells.
        const QRect inside(QPoint(rect.left, rect.top), QPoint(rect.right - 2, rect.bottom - 2));
        return all.copy(QRect(inside.topLeft() * ratio, inside.size() * ratio));
    }

    aCMemoryDataSet data;
};

class PaintCounter : public QObject {
public:
    explicit PaintCounter(QWidget& widget) { widget.installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override
    {
        paints += event->type() == QEvent::Paint;
        return false;
    }

    int paints = 0;
};

} // namespace

TEST_F(RecordPaint, PlainTextsLookAsTheToolkitDrawsThem)
{
    const std::vector<std::wstring> texts = {L"AVATAR, To 12.50", L"2024-03-17 10:30:00",
                                             L"\u0401\u043b\u043a\u0430 \u0413\u0423\u0414\u0410",
                                             L"\u00c5ngstr\u00f6m"};
    showTexts(texts);
    for (size_t i = 0; i < texts.size(); ++i) {
        const QImage cell = cellOnScreen(static_cast<long>(i) + 1);
        EXPECT_EQ(cell, drawnByToolkit(cell, QString::fromStdWString(texts[i]))) << i;
    }
}

TEST_F(RecordPaint, TextsThatNeedShapingLookAsTheToolkitDrawsThem)
{
    const std::vector<std::wstring> texts = {L"e\u0301a\u0308", L"\u0634\u0645\u0633",
                                             L"\u65e5\u672c"};
    showTexts(texts);
    for (size_t i = 0; i < texts.size(); ++i) {
        const QImage cell = cellOnScreen(static_cast<long>(i) + 1);
        EXPECT_EQ(cell, drawnByToolkit(cell, QString::fromStdWString(texts[i]))) << i;
    }
}

TEST_F(RecordPaint, ALongTextEndsWithAnEllipsisInsideItsCell)
{
    showTexts({std::wstring(200, L'W'), std::wstring(200, L'\u65e5')});
    for (long line = 1; line <= 2; ++line) {
        const QImage cell = cellOnScreen(line);
        const int inset = static_cast<int>(3 * cell.devicePixelRatio());
        const QImage margin = cell.copy(cell.width() - inset, 0, inset, cell.height());
        const QImage empty = drawnByToolkit(margin, QString());
        EXPECT_EQ(margin, empty) << line;
        EXPECT_NE(cell, drawnByToolkit(cell, QString())) << line;
    }
    const QFontMetrics metrics(surface()->font());
    // As many letters as fit with the ellipsis, and not one less.
    const int room = 300 - 8;
    const int dots = metrics.horizontalAdvance(QChar(0x2026));
    const int letters = (room - dots) / metrics.horizontalAdvance(QChar('W'));
    const QImage cell = cellOnScreen(1);
    EXPECT_EQ(cell, drawnByToolkit(cell, QString(letters, QChar('W')) + QChar(0x2026)));
}

TEST_F(RecordPaint, RowsThatWereMovedLookAsIfPaintedAnew)
{
    VirtualRows rows(1'000);
    rows.failing = {9, 30};
    show(rows);
    view.SetFocusCell(2, 5);
    for (const long first : {2L, 3L, 12L, 11L, 5L}) {
        view.ScrollToRow(first);
        const QImage moved = screen();
        view.repaint();
        EXPECT_EQ(moved, screen()) << first;
    }
    view.doScroll(13, view.GetFirstShownRow() - 1);
    const QImage moved = screen();
    view.repaint();
    EXPECT_EQ(moved, screen());
}

TEST_F(RecordPaint, ABarIsPaintedAgainOnlyWhenItsThumbHasMoved)
{
    VirtualRows rows(1'000'000);
    show(rows);
    auto* area = qobject_cast<QAbstractScrollArea*>(surface()->parentWidget());
    ASSERT_NE(area, nullptr);
    QScrollBar& bar = *area->verticalScrollBar();
    PaintCounter counter(bar);
    view.ScrollToRow(2);
    UiDriver::processEvents();
    EXPECT_EQ(counter.paints, 0);
    EXPECT_GT(bar.value(), 0); // it is where it says all the same
    view.ScrollToRow(500'000);
    UiDriver::processEvents();
    EXPECT_EQ(counter.paints, 1);
}
