#include <oviapi/celltext.h>
#include <oviapi/dataset.h>
#include <oviapi/phrases.h>

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>

namespace {

using namespace OviAPI;

class Phrases : public testing::Test {
protected:
    ~Phrases() override { loadPhrases(nullptr); }

    // Every phrase is its number.
    static void loadNumbers()
    {
        loadPhrases([](int number) { return std::to_wstring(number); });
    }
};

TEST_F(Phrases, AreEnglishWithoutResources)
{
    EXPECT_EQ(phrase(Phrase::NoRows), L"No rows");
    EXPECT_EQ(phrase(Phrase::Ok), L"OK");
    EXPECT_EQ(faultText(TextFault::NotANumber), L"This is not a number.");
}

TEST_F(Phrases, HaveNumbersOfTheirOwnAndATextEach)
{
    std::set<Phrase> seen;
    for (const EnglishPhrase& each : englishPhrases()) {
        EXPECT_TRUE(seen.insert(each.phrase).second) << static_cast<int>(each.phrase);
        EXPECT_STRNE(each.text, L"");
        const int number = static_cast<int>(each.phrase);
        EXPECT_TRUE(number > 60000 && number < 70000) << number;
    }
}

TEST_F(Phrases, ComeFromTheLoaderByTheirNumbers)
{
    loadNumbers();
    for (const EnglishPhrase& each : englishPhrases())
        EXPECT_EQ(phrase(each.phrase), std::to_wstring(static_cast<int>(each.phrase)));
    loadPhrases(nullptr);
    for (const EnglishPhrase& each : englishPhrases())
        EXPECT_EQ(phrase(each.phrase), each.text);
}

TEST_F(Phrases, ThatTheLoaderDoesNotHaveStayEnglish)
{
    loadNumbers();
    loadPhrases([](int number) { return number == 61001 ? L"Keine Spalten" : std::wstring(); });
    EXPECT_EQ(phrase(Phrase::NoColumns), L"Keine Spalten");
    EXPECT_EQ(phrase(Phrase::NoRows), L"No rows");
}

TEST_F(Phrases, TakeOneArgumentAndAreNoFormatOtherwise)
{
    loadPhrases([](int) { return L"%d 100% %ls %n %ls"; });
    EXPECT_EQ(phrase(Phrase::RowsCopied, L"%ls%s"), L"%d 100% %ls%s %n %ls");
    EXPECT_EQ(phrase(Phrase::NoRows), L"%d 100% %ls %n %ls");
}

TEST_F(Phrases, EveryLoadIsAnEditionOfItsOwn)
{
    const unsigned long before = phraseEdition();
    loadNumbers();
    EXPECT_NE(phraseEdition(), before);
}

TEST_F(Phrases, AreWholeInAnotherThreadWhileTheLanguageIsSwitched)
{
    std::atomic<bool> ended = false;
    int wrong = 0;
    std::thread reader([&] {
        while (!ended) {
            const std::wstring text = phrase(Phrase::DbLocked);
            if (text != L"61104" && text != L"The database is locked by another session")
                ++wrong;
        }
    });
    for (int i = 0; i < 200; ++i) {
        loadNumbers();
        loadPhrases(nullptr);
    }
    ended = true;
    reader.join();
    EXPECT_EQ(wrong, 0);
}

TEST_F(Phrases, SayWhyACellIsRefusedInThePresentLanguage)
{
    loadNumbers();
    EXPECT_EQ(faultText(TextFault::NotANumber), L"61011");
    EXPECT_EQ(faultText(TextFault::NotText), L"61018");
    EXPECT_EQ(faultText(TextFault::None), L"");
}

// One row with a value that is not of its column's type.
class OddRow : public aCDataSet {
public:
    OddRow()
    {
        m_rowCount = 1;
        AddColDef(
            new aCColumn(L"n", static_cast<unsigned char>(DataType::Int32), 4, L"n", 0, 0, 0));
        SetRowCache(true);
    }
    short ToRow(short, long, bool) override { return 0; }
    const void* GetRowData() override { return aCDataSet::GetRowData() ? nullptr : &m_number; }
    unsigned ColumnState(int) override { return StampInvalid; }
    aCString ColumnReason(int) override { return phrase(Phrase::TypeMismatch, L"five"); }

private:
    int m_number = 0;
};

TEST_F(Phrases, InTheReasonOfACachedRowAreThoseOfThePresentLanguage)
{
    OddRow data;
    ASSERT_EQ(data.SetRow(1), 0);
    ASSERT_TRUE(data.IsRowCached(1));
    EXPECT_EQ(data.CellReason(1), L"The stored value does not have the type of its column: five");
    loadPhrases([](int) { return L"falsch: %ls"; });
    ASSERT_EQ(data.SetRow(1), 0);
    EXPECT_EQ(data.CellReason(1), L"falsch: five");
    EXPECT_EQ(data.ReadOnlyReason(1), L"falsch: five");
}

} // namespace
