#include <cstring>
#include <memory>
#include <new>

#include "data/dorconnect.h"
#include "tests/data/database.h"
#include "tests/support/uidriver.h"

using namespace DorCPP;

namespace {

// Shows a connection's strings to a test.
struct OpenConnect : xDorConnect {
    static const char* kept(const xDorConnect& of, int position)
    {
        const char* const strings[] = {of.*(&OpenConnect::m_first), of.*(&OpenConnect::m_second),
                                       of.*(&OpenConnect::m_third), of.*(&OpenConnect::m_fourth)};
        return strings[position];
    }
    const char* kept(int position) const { return kept(*this, position); }
};

class RememberingConnect : public Database {
protected:
    int create(xDorConnect& connect, const char* user = "user", const char* options = nullptr) const
    {
        return connect.CreateCS(user, "secret", path().c_str(), options, 0, false, true);
    }
};

} // namespace

TEST_F(RememberingConnect, OpensASessionAndRemembersTheStrings)
{
    OpenConnect connect;
    EXPECT_GT(create(connect, "user", "timeout=7"), 0);
    EXPECT_TRUE(connect.isOpen());
    EXPECT_STREQ(connect.kept(0), "user");
    EXPECT_STREQ(connect.kept(1), "secret");
    EXPECT_EQ(connect.kept(2), path());
    EXPECT_STREQ(connect.kept(3), "timeout=7");
}

TEST_F(RememberingConnect, NullStringsAreEmpty)
{
    OpenConnect connect;
    connect.CreateCS("a", "b", path().c_str(), "timeout=1", 0, false, true);
    connect.CreateCS(nullptr, nullptr, path().c_str(), nullptr, 0, false, true);
    EXPECT_STREQ(connect.kept(0), "");
    EXPECT_STREQ(connect.kept(1), "");
    EXPECT_STREQ(connect.kept(3), "");
    EXPECT_THROW(connect.CreateCS(nullptr, nullptr, nullptr, nullptr, 0, false, true), DorX);
}

TEST_F(RememberingConnect, KeptALongStringIsCutTo255Bytes)
{
    // Kept: the strings have a fixed size.
    OpenConnect connect;
    const std::string user(300, 'u');
    create(connect, user.c_str());
    EXPECT_EQ(std::strlen(connect.kept(0)), 255U);
    EXPECT_EQ(connect.kept(0), user.substr(0, 255));
    const std::string fits(255, 'f');
    create(connect, fits.c_str());
    EXPECT_EQ(connect.kept(0), fits);
}

TEST_F(RememberingConnect, AShorterStringLeavesNothingOfTheOneBefore)
{
    OpenConnect connect;
    create(connect, "a long user name");
    create(connect, "u");
    EXPECT_EQ(std::memcmp(connect.kept(0), std::string(256, 0).replace(0, 1, "u").data(), 256), 0);
}

TEST_F(RememberingConnect, ItsOwnStringsMayBeGivenToIt)
{
    OpenConnect connect;
    create(connect);
    connect.CreateCS(connect.kept(0), connect.kept(1), connect.kept(2), connect.kept(3), 0, false,
                     true);
    EXPECT_STREQ(connect.kept(0), "user");
    EXPECT_TRUE(connect.isOpen());
}

TEST_F(RememberingConnect, NoStringStaysInMemory)
{
    alignas(OpenConnect) static std::byte place[sizeof(OpenConnect)];
    auto* connect = new (place) OpenConnect; // in the place above
    create(*connect, "a marked user");
    connect->~OpenConnect();
    const std::string_view left(reinterpret_cast<const char*>(place), sizeof place);
    EXPECT_EQ(left.find("marked"), std::string_view::npos);
    EXPECT_EQ(left.find("secret"), std::string_view::npos);
}

TEST_F(RememberingConnect, ADuplicateOpensASecondSessionWithTheSameStringsAndMode)
{
    OpenConnect connect;
    connect.CreateCS("user", "secret", path().c_str(), "timeout=9", ModeReadOnly, false, true);
    const std::unique_ptr<xDorConnect> copy(
        connect.Duplicate(nullptr, nullptr, nullptr, nullptr, -1));
    EXPECT_NE(copy->channel(), connect.channel());
    EXPECT_EQ(copy->mode(false), ModeReadOnly);
    for (int i = 0; i < 4; ++i)
        EXPECT_STREQ(OpenConnect::kept(*copy, i), connect.kept(i));
    connect.close();
    EXPECT_TRUE(copy->isAlive());
}

TEST_F(RememberingConnect, ADuplicateTakesWhatIsNotNull)
{
    OpenConnect connect;
    create(connect);
    const std::unique_ptr<xDorConnect> copy(
        connect.Duplicate("other", nullptr, nullptr, "timeout=3", ModeReadOnly));
    EXPECT_STREQ(OpenConnect::kept(*copy, 0), "other");
    EXPECT_STREQ(OpenConnect::kept(*copy, 1), "secret");
    EXPECT_STREQ(OpenConnect::kept(*copy, 3), "timeout=3");
    EXPECT_EQ(copy->mode(false), ModeReadOnly);
    EXPECT_EQ(copy->keepAliveTimer().interval(), 1000);
}

TEST_F(RememberingConnect, ErrorsOfOpeningPassToTheCaller)
{
    OpenConnect connect;
    const auto duplicate = [&](const char* database) {
        delete connect.Duplicate(nullptr, nullptr, database, nullptr, -1);
    };
    EXPECT_THROW(duplicate(nullptr), DorX); // never opened
    create(connect);
    EXPECT_THROW(duplicate("/no/such/file"), DorX);
    EXPECT_THROW(connect.CreateCS(nullptr, nullptr, path().c_str(), "nonsense", 0, false, true),
                 DorX);
}

TEST_F(RememberingConnect, IsAliveWhileTheServerAnswers)
{
    OpenConnect connect;
    EXPECT_FALSE(connect.isAlive());
    create(connect);
    EXPECT_TRUE(connect.isAlive());
    std::filesystem::rename(path(), path() + ".away");
    EXPECT_FALSE(connect.isAlive());
    std::filesystem::rename(path() + ".away", path());
}

TEST_F(RememberingConnect, TheTimersProbeReportsNothing)
{
    OpenConnect connect;
    EXPECT_EQ(connect.onTimer(&connect), 0); // nothing is open
    create(connect);
    EXPECT_EQ(connect.onTimer(&connect), 0);
}

TEST_F(RememberingConnect, TheTimerIsStartedByItsOwner)
{
    OpenConnect connect;
    create(connect);
    OviAPI::WTimer& timer = connect.keepAliveTimer();
    EXPECT_EQ(timer.interval(), 1000);
    EXPECT_FALSE(timer.isRunning());
    OviAPI::connect<&OviAPI::WTimer::onTimer>(timer, connect, &xDorConnect::onTimer);
    timer.setInterval(1);
    int ticks = 0;
    struct Receiver : OviAPI::Object {
    } receiver;
    OviAPI::connect<&OviAPI::WTimer::onTimer>(timer, receiver,
                                              [&](OviAPI::Object*) -> OviAPI::SlotResult {
                                                  ++ticks;
                                                  return 0;
                                              });
    timer.start();
    EXPECT_TRUE(UiDriver::waitUntil([&] { return ticks >= 2; }));
}
