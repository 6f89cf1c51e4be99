#include <array>
#include <filesystem>

#include <oviapi/application.h>
#include <oviapi/form.h>
#include <oviapi/resourcemanager.h>

#include "tests/app/support.h"
#include "tests/data/asyncwait.h"

using namespace DorCPP;

namespace {

constexpr int second = 1000; // ms
constexpr int slack = 700;   // ms that a busy machine may add

OviAPI::ResourceManager& texts()
{
    static OviAPI::ResourceManager manager(std::filesystem::path(TYPICAL_RRS).wstring().c_str());
    return manager;
}

class ProgressWindow : public AsyncWait {
protected:
    ProgressWindow()
        : form(cursor.form())
    {
        texts().setLanguage(OviAPI::ResourceManager::English);
        xRAsyncCursor::init(OviAPI::Font(), &texts(), nullptr);
    }

    bool atRest() const
    {
        return !form.isVisible() && !Parts::showTimer(form).isRunning() &&
               !Parts::hideTimer(form).isRunning();
    }
    // A statement that takes so many milliseconds; then the windows are looked at until everything
    // is at rest.
    void runFor(int milliseconds)
    {
        DorConnect patient;
        patient.createCS(nullptr, nullptr, path().c_str(), "timeout=60000", 0, false, true);
        run("CREATE TABLE t(a)");
        cursor.create(patient, 0, nullptr, true);
        WriteLock lock(connection);
        Stopwatch time;
        const When release([&] { return time.milliseconds() >= milliseconds; },
                           [&] { lock.release(); });
        const When shown([&] { return form.isVisible(); }, [&] { shownAt = time.milliseconds(); });
        cursor.execute("INSERT INTO t VALUES(1)", true, false);
        endedAt = time.milliseconds();
        EXPECT_EQ(form.isVisible(), shownAt >= 0);
        EXPECT_TRUE(UiDriver::waitUntil([&] { return atRest(); }, 2 * second + slack));
        hiddenAt = time.milliseconds();
    }

    ProcessExecForm& form;
    int shownAt = -1; // ms since the start, -1 for never
    int endedAt = -1;
    int hiddenAt = -1;
};

} // namespace

TEST_F(ProgressWindow, IsNotShownForAStatementOfHalfASecond)
{
    runFor(second / 2);
    EXPECT_EQ(shownAt, -1);
    EXPECT_LT(hiddenAt, second + slack);
}

TEST_F(ProgressWindow, IsShownFromTheFirstSecondUntilASecondAfterTheEnd)
{
    runFor(3 * second);
    EXPECT_GE(shownAt, second - 10);
    EXPECT_LT(shownAt, second + slack);
    EXPECT_GE(hiddenAt - endedAt, second - 10);
    EXPECT_LT(hiddenAt - endedAt, second + slack);
}

TEST_F(ProgressWindow, KeptItsPlaceIsTheCornerOfTheScreenAndItsPartsHaveFixedPlaces)
{
    // Kept: it is not centred over its master form.
    ASSERT_TRUE(form.create(&cursor));
    EXPECT_EQ(form.geometry(), (OviAPI::Rect{0, 0, 240, 70}));
    EXPECT_EQ(form.style() & 32, 32);
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(Parts::label(form).geometry(), (OviAPI::Rect{10, 10, 210, 27}));
    const int left = (form.clientWidth() - 70) / 2;
    const int top = form.clientHeight() - 30;
    EXPECT_EQ(Parts::button(form).geometry(), (OviAPI::Rect{left, top, left + 70, top + 20}));
    EXPECT_EQ(Parts::button(form).style(), 6);
    EXPECT_EQ(form.defaultButton(), &Parts::button(form));
    EXPECT_EQ(Parts::showTimer(form).interval(), 1000);
    EXPECT_EQ(Parts::hideTimer(form).interval(), 1000);
}

TEST_F(ProgressWindow, TakesTheFontOfInit)
{
    const OviAPI::Font font(L"DejaVu Sans", 11, true);
    xRAsyncCursor::init(font, nullptr, nullptr);
    EXPECT_EQ(xRAsyncCursor::resources(), &texts()); // null leaves the one before
    ASSERT_TRUE(form.create(&cursor));
    EXPECT_EQ(form.font(), font);
    EXPECT_EQ(Parts::label(form).font(), font);
}

TEST_F(ProgressWindow, SpeaksTheLanguageOfItsResources)
{
    ASSERT_TRUE(form.create(&cursor));
    EXPECT_EQ(form.title(), L"Query in progress");
    EXPECT_EQ(Parts::label(form).text(), L"The query is running...");
    EXPECT_EQ(Parts::button(form).text(), L"Stop");
    texts().setLanguage(OviAPI::ResourceManager::Russian);
    OviAPI::Application::instance()->notifyCharsetChanged();
    EXPECT_EQ(Parts::button(form).text(), L"\x421\x442\x43E\x43F");
    EXPECT_NE(form.title(), L"Query in progress");
    EXPECT_NE(Parts::label(form).text(), L"The query is running...");
}

TEST_F(ProgressWindow, TakesAtMostAHundredCharactersOfEachText)
{
    ResourceBuilder builder;
    for (const uint32_t id : {2222180U, 2222181U, 2222182U})
        builder.addString(id, std::wstring(150, L'x').c_str());
    const TempFolder folder;
    const std::filesystem::path file = folder.path() / "long.rrs";
    writeFile(file, builder.compiled());
    OviAPI::ResourceManager manager(file.wstring().c_str());
    xRAsyncCursor::init(OviAPI::Font(), &manager, nullptr);
    ASSERT_TRUE(form.create(&cursor));
    EXPECT_EQ(form.title(), std::wstring(100, L'x'));
    EXPECT_EQ(Parts::label(form).text(), std::wstring(100, L'x'));
    EXPECT_EQ(Parts::button(form).text(), std::wstring(100, L'x'));
    xRAsyncCursor::init(OviAPI::Font(), &texts(), nullptr);
}

TEST_F(ProgressWindow, TheButtonStopsTheStatement)
{
    const When shown([&] { return cursor.isWaiting(); },
                     [&] {
                         cursor.doShowCancel();
                         EXPECT_TRUE(form.isVisible());
                         UiDriver::click(Parts::button(form));
                     });
    EXPECT_NO_THROW(cursor.execute(endless, true, false));
    EXPECT_TRUE(Parts::hideTimer(form).isRunning());
    EXPECT_TRUE(UiDriver::waitUntil([&] { return atRest(); }));
}

TEST_F(ProgressWindow, TheButtonStopsASingleLevelStatement)
{
    const When shown([&] { return cursor.isWaiting(); },
                     [&] {
                         cursor.doShowCancel();
                         Parts::button(form).push();
                     });
    EXPECT_NO_THROW(cursor.execute(endless, true, true));
}

TEST_F(ProgressWindow, TheButtonWorksWhileAModalFormIsOpen)
{
    OviAPI::WForm modal;
    modal.move(0, 200, 200, 100);
    bool returned = false;
    const When begin([&] { return modal.isVisible(); },
                     [&] {
                         cursor.execute(endless, true, false);
                         returned = true;
                         modal.exitModal(1);
                     });
    const When shown([&] { return cursor.isWaiting(); },
                     [&] {
                         cursor.doShowCancel();
                         UiDriver::click(Parts::button(form));
                     });
    EXPECT_EQ(modal.execModal(), 1);
    EXPECT_TRUE(returned);
}

TEST_F(ProgressWindow, TheCloseBoxStopsTheStatementAndBothTimers)
{
    const When shown([&] { return cursor.isWaiting(); },
                     [&] {
                         cursor.doShowCancel();
                         UiDriver::closeWindow(form);
                         EXPECT_FALSE(form.isVisible());
                     });
    cursor.execute(endless, true, false);
    EXPECT_TRUE(atRest());
}

TEST_F(ProgressWindow, AfterAStopItSaysSoAndStaysUntilTheServerHasStopped)
{
    cursor.doShowCancel();
    auto handler = std::make_shared<int>();
    form.statementEnds();
    form.statementStopped(handler);
    EXPECT_EQ(Parts::label(form).text(), L"Asking the server to stop...");
    EXPECT_FALSE(Parts::button(form).isEnabled());
    const Stopwatch time;
    EXPECT_FALSE(UiDriver::waitUntil([&] { return !form.isVisible(); }, 2 * second));
    handler = nullptr;
    EXPECT_TRUE(UiDriver::waitUntil([&] { return atRest(); }, second + slack));
    EXPECT_GE(time.milliseconds(), 2 * second);
}

TEST_F(ProgressWindow, TheNextStatementBeginsWithTheUsualText)
{
    cursor.doShowCancel();
    const auto handler = std::make_shared<int>();
    form.statementEnds();
    form.statementStopped(handler);
    cursor.initCancel();
    EXPECT_EQ(Parts::label(form).text(), L"The query is running...");
    EXPECT_TRUE(Parts::button(form).isEnabled());
    EXPECT_FALSE(Parts::hideTimer(form).isRunning());
    EXPECT_FALSE(Parts::showTimer(form).isRunning()); // it is there already
    EXPECT_TRUE(form.isVisible());
}

TEST_F(ProgressWindow, AStoppedStatementIsSaidToBeStopped)
{
    bool said = false;
    const When stop([&] { return cursor.isWaiting(); },
                    [&] {
                        cursor.doShowCancel();
                        cursor.terminate();
                    });
    cursor.execute(endless, true, false);
    said = !Parts::button(form).isEnabled();
    EXPECT_TRUE(said);
    cursor.execute("SELECT 1", true, false);
    EXPECT_TRUE(Parts::button(form).isEnabled());
}

TEST_F(ProgressWindow, WithoutACursorTheButtonEndsTheInnermostWait)
{
    ProcessExecForm loose;
    ASSERT_TRUE(loose.create(nullptr));
    const When stop(waiting(1), [&] { loose.onOkPush(&loose); });
    EXPECT_NO_THROW(cursor.execute(endless, true, false));
}

TEST_F(ProgressWindow, OfAStatementThatHasEndedItStopsNoOther)
{
    OpenCursor ended;
    ended.create(connection, 0, nullptr, true);
    ended.execute("SELECT 1", true, false);
    ended.doShowCancel();
    bool stayed = false;
    const When late(waiting(1), [&] { Parts::button(ended.form()).push(); });
    const Stopwatch time;
    const When stop([&] { return time.milliseconds() > 100; },
                    [&] {
                        stayed = cursor.isWaiting();
                        cursor.terminate();
                    });
    cursor.execute(endless, true, false);
    EXPECT_TRUE(stayed);
}

TEST_F(ProgressWindow, IsNotUsedWhenProgressIsNotShown)
{
    cursor.setShowProgress(false);
    cursor.doShowCancel();
    cursor.execute("SELECT 1", true, false);
    EXPECT_FALSE(form.isCreated());
    cursor.setShowProgress(true);
    cursor.doShowCancel();
    EXPECT_TRUE(form.isVisible());
    cursor.setShowProgress(false);
    EXPECT_TRUE(atRest());
}

TEST_F(ProgressWindow, BelongsToTheMasterFormAsLongAsThatLives)
{
    auto master = std::make_unique<OviAPI::WForm>();
    master->move(0, 0, 100, 100);
    master->create();
    xRAsyncCursor::init(OviAPI::Font(), nullptr, master.get());
    EXPECT_EQ(xRAsyncCursor::masterForm(), master.get());
    ASSERT_TRUE(form.create(&cursor));
    EXPECT_EQ(form.parent(), master.get());
    cursor.doShowCancel();
    const When close(waiting(1), [&] { master = nullptr; });
    const When stop([&] { return !master; }, [&] { cursor.terminate(); });
    cursor.execute(endless, true, false);
    EXPECT_EQ(xRAsyncCursor::masterForm(), nullptr);
    EXPECT_TRUE(UiDriver::waitUntil([&] { return atRest(); }));
    cursor.doShowCancel();
    EXPECT_TRUE(form.isVisible());
    EXPECT_EQ(form.parent(), nullptr);
}

TEST_F(ProgressWindow, ClosingTheCursorHidesItInASecond)
{
    cursor.doShowCancel();
    cursor.close();
    EXPECT_TRUE(form.isVisible());
    EXPECT_TRUE(Parts::hideTimer(form).isRunning());
    EXPECT_TRUE(UiDriver::waitUntil([&] { return atRest(); }));
}

TEST_F(ProgressWindow, TheShowTimerShowsNothingThatWasNeverMade)
{
    EXPECT_EQ(form.onTimer(&form), 0);
    EXPECT_FALSE(form.isVisible());
}
