// Opening databases that take their time.
#include <future>

#include <gtest/gtest.h>

#include <oviapi/inputdriver.h>
#include <oviapi/text.h>
#include <oviapi/timer.h>

#include "application.h"
#include "database.h"
#include "dialogs.h"
#include "explorer/opening.h"
#include "explorer/textlookup.h"

namespace {

using OviAPI::InputDriver;
using OviAPI::VirtualKey;

// Opens a database as late as a test wants it.
class LateOpening : public DialogTest {
protected:
    LateOpening()
        : m_opening(m_above)
    {
        TestDatabase(path()).execute("CREATE TABLE t (a INTEGER)");
    }
    ~LateOpening() override
    {
        release();
        BackgroundTask::waitForAbandoned();
    }
    std::string path() const { return m_folder.path() / "late.db"; }
    // What opens the database after release.
    BackgroundOpening::Open late()
    {
        return [this, gate = m_gate.get_future().share()]() -> std::unique_ptr<DatabaseSession> {
            gate.wait();
            auto session = std::make_unique<DatabaseSession>(path());
            m_channel = session->connection().channel();
            return session;
        };
    }
    void release()
    {
        if (!m_released)
            m_gate.set_value();
        m_released = true;
    }

    Opening m_opening;
    std::promise<void> m_gate;
    bool m_released = false;
    std::atomic<int> m_channel = 0;
};

TEST_F(LateOpening, EventsAreHandledMeanwhile)
{
    OviAPI::WTimer timer(10);
    int ticks = 0;
    OviAPI::connect<&OviAPI::WTimer::onTimer>(timer, m_above,
                                              [&](OviAPI::Object*) -> OviAPI::SlotResult {
                                                  if (++ticks == 5) {
                                                      EXPECT_TRUE(m_opening.isRunning());
                                                      release();
                                                  }
                                                  return 1;
                                              });
    timer.start();
    const auto session = m_opening.run(L"late", late());
    ASSERT_NE(session, nullptr);
    EXPECT_EQ(session->tables().size(), 1U);
    EXPECT_FALSE(m_opening.isRunning());
}

TEST_F(LateOpening, AfterASecondADialogIsShownUntilItIsOpen)
{
    const auto started = std::chrono::steady_clock::now();
    Script script;
    script.step(modalIsOpen, [&] {
        EXPECT_GE(std::chrono::steady_clock::now() - started, std::chrono::seconds(1));
        EXPECT_EQ(OviAPI::WForm::topModal()->title(), textOf(TextOpeningTitle));
        EXPECT_NE(labelIn(*OviAPI::WForm::topModal()).find(L"late one"), std::wstring::npos);
        checkTexts(*OviAPI::WForm::topModal());
        release();
    });
    EXPECT_NE(m_opening.run(L"late one", late()), nullptr);
    EXPECT_FALSE(modalIsOpen());
}

TEST_F(LateOpening, TheUserCanGiveItUpAndItIsClosedWhenItIsOpenAtLast)
{
    Script script;
    script.step(modalIsOpen, [] { InputDriver::key(VirtualKey(OviAPI::KeyEscape)); });
    EXPECT_EQ(m_opening.run(L"late", late()), nullptr);
    EXPECT_FALSE(m_opening.isRunning());
    release();
    BackgroundTask::waitForAbandoned();
    ASSERT_GT(m_channel, 0);
    DorCPP::DorConnect found;
    EXPECT_THROW(found.attach(m_channel, false), DorCPP::DorX);
}

TEST_F(LateOpening, GivingUpNeedsNoDialog)
{
    OviAPI::WTimer timer(10);
    OviAPI::connect<&OviAPI::WTimer::onTimer>(timer, m_above,
                                              [&](OviAPI::Object*) -> OviAPI::SlotResult {
                                                  m_opening.giveUp();
                                                  return 1;
                                              });
    timer.start();
    EXPECT_EQ(m_opening.run(L"late", late()), nullptr);
    EXPECT_FALSE(modalIsOpen());
}

TEST_F(LateOpening, AnotherOneIsRefusedMeanwhile)
{
    OviAPI::WTimer timer(10);
    int tries = 0;
    OviAPI::connect<&OviAPI::WTimer::onTimer>(
        timer, m_above, [&](OviAPI::Object*) -> OviAPI::SlotResult {
            if (++tries == 1) {
                EXPECT_EQ(
                    m_opening.run(L"other",
                                  [this] { return std::make_unique<DatabaseSession>(path()); }),
                    nullptr);
                release();
            }
            return 1;
        });
    timer.start();
    EXPECT_NE(m_opening.run(L"late", late()), nullptr);
    EXPECT_GE(tries, 1);
}

TEST_F(LateOpening, AFailureIsThrownOnTheThreadOfTheWindow)
{
    try {
        m_opening.run(L"none", []() -> std::unique_ptr<DatabaseSession> {
            return std::make_unique<DatabaseSession>("/nowhere/none.db");
        });
        ADD_FAILURE() << "it was opened";
    } catch (const OpenFailure& failure) {
        EXPECT_EQ(failure.reason(), TextErrorMissing);
    }
    EXPECT_FALSE(m_opening.isRunning());
}

} // namespace
