// The dataset and its columns in a record view.
#include <oviapi/form.h>
#include <oviapi/paintdevice.h>
#include <oviapi/painter.h>
#include <oviapi/recordcopy.h>
#include <oviapi/recordview.h>

#include "data/dordataset.h"
#include "data/orderbycolumn.h"
#include "database.h"

using OviAPI::Rect;

namespace {

class RecordViewOfDataSet : public Database {
protected:
    RecordViewOfDataSet()
    {
        run({"create table t(a integer primary key, b varchar(10))",
             "insert into t values(1, 'one'), (2, 'two'), (3, null)"});
        form.create();
        form.move(0, 0, 400, 300);
        view.setParent(&form);
        view.create();
        view.move(0, 0, 400, 300);
        form.show(true);
    }
    ~RecordViewOfDataSet() override { view.SetDataSet(nullptr, false); }

    void open(const wchar_t* sql)
    {
        data.SetCreatesOrderByColumns(true);
        data.Open(channel, sql, 0, true);
        view.SetDataSet(&data, true);
        view.SetColWidth(1, 120);
    }
    // The header of column 1 as its column draws it.
    OviAPI::Picture header(int order)
    {
        auto& column = dynamic_cast<xCOrderByColumn&>(*data.GetColInfo(1));
        column.m_order = static_cast<xCOrderByColumn::OrderKind>(order);
        OviAPI::Picture picture({400, 100}, OviAPI::Color(1, 2, 3));
        OviAPI::PaintDevice device(picture);
        OviAPI::Painter painter(device);
        column.DrawHeader(&painter, 1, &view);
        EXPECT_EQ(painter.pen(), OviAPI::Pen());
        return picture;
    }

    class View : public OviAPI::aCRecordView {
    public:
        using OviAPI::aCRecordView::hintAt;
    };

    OviAPI::WForm form;
    View view;
    xCDorvexDataSet data;
};

int pixelsOf(const OviAPI::Picture& picture, const Rect& inside, uint32_t color)
{
    int count = 0;
    for (int y = inside.top; y < inside.bottom; ++y) {
        for (int x = inside.left; x < inside.right; ++x)
            count += (picture.pixel(x, y) & 0xFFFFFF) == color ? 1 : 0;
    }
    return count;
}

constexpr uint32_t white = 0xFFFFFF;
constexpr uint32_t grey = 0x808080;

} // namespace

TEST_F(RecordViewOfDataSet, ShowsValuesNullAndTheNumberOfRows)
{
    open(L"select * from t order by a");
    EXPECT_EQ(view.GetColCount(), 2);
    EXPECT_EQ(view.GetRowCount(), 3);
    EXPECT_EQ(view.GetCellText(2, 2), L"two");
    EXPECT_EQ(view.GetCellWord(2, 3), L"NULL");
    EXPECT_EQ(view.GetCellWord(2, 2), L"");
}

TEST_F(RecordViewOfDataSet, ShowsTheErrorOfARowThatHasGone)
{
    open(L"select * from t order by a");
    run("delete from t where a = 2");
    data.ResetDataSet(true);
    EXPECT_EQ(view.GetRowCount(), 2);
    run("delete from t where a = 3");
    data.RefreshViews();
    EXPECT_NE(view.GetRowFault(2), L"");
    EXPECT_EQ(view.GetRowFault(1), L"");
}

TEST_F(RecordViewOfDataSet, ShowsCopiesAndExplainsATextInAColumnOfNumbers)
{
    run({"create table n(a integer, b integer)", "insert into n values('n/a', 1)"});
    open(L"select * from n");
    EXPECT_EQ(view.GetCellText(1, 1), L"n/a");
    const auto copy = OviAPI::RecordCopy::make(data, {1, 2, 1, 1}, false);
    EXPECT_EQ(copy.text, L"n/a\t1\n");
    Rect place;
    ASSERT_TRUE(view.GetClientCellRect(1, 1, place));
    const std::wstring hint = view.hintAt(place.left + 5, place.top + 5);
    EXPECT_EQ(hint, L"The stored value does not have the type of its column: n/a");
}

TEST_F(RecordViewOfDataSet, ExplainsWhyACellCannotBeChanged)
{
    open(L"select upper(b) as u from t");
    Rect place;
    ASSERT_TRUE(view.GetClientCellRect(1, 1, place));
    EXPECT_EQ(view.hintAt(place.left + 5, place.top + 5),
              L"The value is computed and does not lie in a column of a table.");
}

TEST_F(RecordViewOfDataSet, SurvivesTheDataSet)
{
    {
        xCDorvexDataSet shortLived;
        shortLived.Open(channel, L"select * from t", 0, true);
        view.SetDataSet(&shortLived, true);
    }
    EXPECT_EQ(view.GetDataSet(), nullptr);
}

TEST_F(RecordViewOfDataSet, DrawsARaisedHeaderOverItsRectangleOnly)
{
    open(L"select * from t");
    const OviAPI::Picture picture = header(0);
    Rect rect;
    ASSERT_TRUE(view.GetColRect(1, rect, nullptr, true));
    EXPECT_EQ(pixelsOf(picture, rect, 0x010203), 0);
    const int all = 400 * 100;
    EXPECT_EQ(pixelsOf(picture, {0, 0, 400, 100}, 0x010203),
              all - static_cast<int>(rect.width() * rect.height()));
}

TEST_F(RecordViewOfDataSet, DrawsTheTriangleOfASortedColumnRightOfItsCaption)
{
    open(L"select * from t");
    Rect inside;
    ASSERT_TRUE(view.GetColRect(1, inside, nullptr, true));
    inside.inflate(-3, -2);
    const OviAPI::Size caption = OviAPI::GetTextSize(view.GetHeaderFont(1), L"a");
    const OviAPI::Picture none = header(0);
    for (const int order : {1, 2}) {
        const OviAPI::Picture picture = header(order);
        const OrderTriangle triangle(inside, caption, order);
        for (const OrderTriangle::Line& line : triangle.lines) {
            const uint32_t expected = line.color.rgb();
            const int x = (line.from.x + line.to.x) / 2;
            const int y = (line.from.y + line.to.y) / 2;
            EXPECT_GT(pixelsOf(picture, {x - 1, y - 1, x + 2, y + 2}, expected), 0) << order;
        }
        EXPECT_GT(pixelsOf(picture, inside, grey), pixelsOf(none, inside, grey));
        EXPECT_GT(pixelsOf(picture, inside, white), pixelsOf(none, inside, white));
    }
}

TEST_F(RecordViewOfDataSet, DrawsNoHeaderOfAColumnThatIsNotThere)
{
    open(L"select * from t");
    auto& column = dynamic_cast<xCOrderByColumn&>(*data.GetColInfo(1));
    OviAPI::Picture picture({400, 100}, OviAPI::Color(1, 2, 3));
    OviAPI::PaintDevice device(picture);
    OviAPI::Painter painter(device);
    column.DrawHeader(&painter, 9, &view);
    column.DrawHeader(&painter, 1, nullptr);
    column.DrawHeader(nullptr, 1, &view);
    EXPECT_EQ(pixelsOf(picture, {0, 0, 400, 100}, 0x010203), 400 * 100);
}
