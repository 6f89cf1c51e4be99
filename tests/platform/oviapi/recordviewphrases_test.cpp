// What a record view says itself, in the language of the application.
#include "recordview_support.h"

#include <QToolTip>

#include <oviapi/application.h>
#include <oviapi/phrases.h>

using namespace OviAPI;

namespace {

class RecordViewPhrases : public RecordViewTest {
protected:
    ~RecordViewPhrases() override { loadPhrases(nullptr); }

    // Every phrase is its number, and an argument if it has one.
    static void switchLanguage()
    {
        loadPhrases([](int number) {
            const bool argument = number == 61004 || number == 61033;
            return std::to_wstring(number) + (argument ? L" %ls" : L"");
        });
        Application::instance()->notifyCharsetChanged();
    }
};

std::vector<uint32_t> pixelsOf(const Picture& picture)
{
    std::vector<uint32_t> pixels;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            pixels.push_back(picture.pixel(x, y));
    }
    return pixels;
}

// Fails in a row and has nothing to say of it.
class SilentRows : public VirtualRows {
public:
    using VirtualRows::VirtualRows;
    short ToRow(short direction, long row, bool follow) override
    {
        const short result = VirtualRows::ToRow(direction, row, follow);
        clearRowErrors();
        return result;
    }
};

} // namespace

TEST_F(RecordViewPhrases, AnEmptyViewSaysSoInTheNewLanguageAtOnce)
{
    VirtualRows data(0);
    show(data);
    EXPECT_EQ(view.GetEmptyText(), L"No rows");
    const auto before = pixelsOf(shot());
    switchLanguage();
    EXPECT_EQ(view.GetEmptyText(), L"61002");
    EXPECT_NE(pixelsOf(shot()), before);
    VirtualRows bare(5, 0);
    show(bare);
    EXPECT_EQ(view.GetEmptyText(), L"61001");
    view.SetDataSet(nullptr, false);
}

TEST_F(RecordViewPhrases, ARowThatCannotBeReadIsAskedForAgain)
{
    SilentRows data(5);
    data.failing = {2};
    show(data);
    EXPECT_EQ(view.GetRowFault(2), L"The row could not be read.");
    switchLanguage();
    EXPECT_EQ(view.GetRowFault(2), L"61003");
    view.SetDataSet(nullptr, false);
}

TEST_F(RecordViewPhrases, ATipTellsWhyACellIsReadOnly)
{
    VirtualRows data(5);
    data.GetColInfo(2)->readOnly = true;
    show(data);
    const Point at = middle(2, 1);
    EXPECT_EQ(view.hintAt(at.x, at.y), L"This column cannot be changed.");
    switchLanguage();
    EXPECT_EQ(view.hintAt(at.x, at.y), L"61021");
    view.SetDataSet(nullptr, false);
}

TEST_F(RecordViewPhrases, ACopyThatWasCutTellsHowManyRowsThereAre)
{
    VirtualRows data(5);
    data.failing = {4};
    show(data);
    view.SelectAll();
    EXPECT_EQ(view.Copy(false), 3);
    EXPECT_EQ(QToolTip::text(), QStringLiteral("Only the first 3 rows have been copied."));
    switchLanguage();
    EXPECT_EQ(view.Copy(false), 3);
    EXPECT_EQ(QToolTip::text(), QStringLiteral("61004 3"));
    QToolTip::hideText();
    view.SetDataSet(nullptr, false);
}
