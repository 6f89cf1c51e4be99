#include <oviapi/object.h>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

using namespace OviAPI;

struct Keyboard : virtual Object {
    virtual bool onKeyDown(int key)
    {
        defaults.push_back(key);
        return true;
    }
    std::vector<int> defaults;
};
struct Window : virtual Keyboard {};
struct Indicator : virtual Object {};
struct ExtWindow : virtual Window, virtual Indicator {
    bool onKeyDown(int key) override
    {
        overridden.push_back(key);
        return false;
    }
    std::vector<int> overridden;
};

} // namespace

template<>
struct OviAPI::Introduces<&Keyboard::onKeyDown> : std::true_type {
};

namespace {

struct Receiver : virtual Object {
    SlotResult slot(Object* sender, int key)
    {
        lastSender = sender;
        keys.push_back(key);
        return answer;
    }
    SlotResult answer = 0;
    Object* lastSender = nullptr;
    std::vector<int> keys;
};

TEST(Signals, ADispatchedEventReachesTheOverrideWhenNoSlotHandlesIt)
{
    ExtWindow window;
    Receiver receiver;
    connect<&Keyboard::onKeyDown>(window, receiver, &Receiver::slot);
    const auto result = dispatch<&Keyboard::onKeyDown>(window, 7);
    EXPECT_FALSE(result.bySlot);
    EXPECT_FALSE(result.value);
    EXPECT_EQ(receiver.keys, std::vector<int>{7});
    EXPECT_EQ(receiver.lastSender, &window);
    EXPECT_EQ(window.overridden, std::vector<int>{7});
}

TEST(Signals, TheFirstSlotThatHandlesAnEventEndsTheDispatch)
{
    Window window;
    Receiver first;
    Receiver second;
    first.answer = 1;
    connect<&Keyboard::onKeyDown>(window, first, &Receiver::slot);
    connect<&Keyboard::onKeyDown>(window, second, &Receiver::slot);
    EXPECT_TRUE(dispatch<&Keyboard::onKeyDown>(window, 1).bySlot);
    EXPECT_TRUE(second.keys.empty());
    EXPECT_TRUE(window.defaults.empty());
}

TEST(Signals, ASlotThatHasOnlySeenAnEventLetsItGoOn)
{
    Window window;
    Receiver first;
    Receiver second;
    first.answer = 2;
    connect<&Keyboard::onKeyDown>(window, first, &Receiver::slot);
    connect<&Keyboard::onKeyDown>(window, second, &Receiver::slot);
    EXPECT_EQ(emit<&Keyboard::onKeyDown>(window, 1).value, 2);
    EXPECT_EQ(second.keys.size(), 1U);
    EXPECT_TRUE(window.defaults.empty()) << "emit runs the slots alone";
}

TEST(Signals, APlainCallRunsNoSlot)
{
    Window window;
    Receiver receiver;
    connect<&Keyboard::onKeyDown>(window, receiver, &Receiver::slot);
    window.onKeyDown(3);
    EXPECT_TRUE(receiver.keys.empty());
    EXPECT_EQ(window.defaults, std::vector<int>{3});
}

TEST(Signals, AConnectionEndsWithItsReceiver)
{
    Window window;
    auto receiver = std::make_unique<Receiver>();
    connect<&Keyboard::onKeyDown>(window, *receiver, &Receiver::slot);
    receiver.reset();
    EXPECT_EQ(emit<&Keyboard::onKeyDown>(window, 1).value, 0);
}

TEST(Signals, AConnectionEndsWithItsSender)
{
    Receiver receiver;
    {
        Window window;
        connect<&Keyboard::onKeyDown>(window, receiver, &Receiver::slot);
    }
    Window other;
    connect<&Keyboard::onKeyDown>(other, receiver, &Receiver::slot);
    emit<&Keyboard::onKeyDown>(other, 5);
    EXPECT_EQ(receiver.keys, std::vector<int>{5});
}

TEST(Signals, DisconnectEndsEveryConnectionToTheReceiver)
{
    Window window;
    Receiver receiver;
    connect<&Keyboard::onKeyDown>(window, receiver, &Receiver::slot);
    connect<&Keyboard::onKeyDown>(window, receiver, &Receiver::slot);
    disconnect<&Keyboard::onKeyDown>(window, receiver);
    emit<&Keyboard::onKeyDown>(window, 1);
    EXPECT_TRUE(receiver.keys.empty());
}

TEST(Signals, ASlotMayDeleteTheSender)
{
    auto* window = new Window; // deleted by the slot
    Receiver owner;
    Receiver later;
    connect<&Keyboard::onKeyDown>(*window, owner, [&](Object*, int) -> SlotResult {
        delete window;
        return 0;
    });
    connect<&Keyboard::onKeyDown>(*window, later, &Receiver::slot);
    const auto result = dispatch<&Keyboard::onKeyDown>(*window, 1);
    EXPECT_TRUE(result.senderDied);
    EXPECT_TRUE(later.keys.empty());
}

TEST(Signals, ASlotMayDeleteALaterReceiverAndItsOwn)
{
    Window window;
    auto first = std::make_unique<Receiver>();
    auto second = std::make_unique<Receiver>();
    Receiver third;
    connect<&Keyboard::onKeyDown>(window, *first, [&](Object*, int) -> SlotResult {
        first.reset();
        second.reset();
        return 0;
    });
    connect<&Keyboard::onKeyDown>(window, *second, &Receiver::slot);
    connect<&Keyboard::onKeyDown>(window, third, &Receiver::slot);
    emit<&Keyboard::onKeyDown>(window, 9);
    EXPECT_EQ(third.keys, std::vector<int>{9});
}

TEST(Signals, ASlotConnectedDuringAnEmissionIsFirstCalledByTheNext)
{
    Window window;
    Receiver adder;
    Receiver late;
    bool added = false;
    connect<&Keyboard::onKeyDown>(window, adder, [&](Object*, int) -> SlotResult {
        if (!std::exchange(added, true))
            connect<&Keyboard::onKeyDown>(window, late, &Receiver::slot);
        return 0;
    });
    emit<&Keyboard::onKeyDown>(window, 1);
    EXPECT_TRUE(late.keys.empty());
    emit<&Keyboard::onKeyDown>(window, 2);
    EXPECT_EQ(late.keys, std::vector<int>{2});
}

TEST(Signals, ANestedEmissionMayDisconnectTheOuterSlots)
{
    Window window;
    Receiver nester;
    Receiver victim;
    int depth = 0;
    connect<&Keyboard::onKeyDown>(window, nester, [&](Object*, int) -> SlotResult {
        if (++depth == 1)
            emit<&Keyboard::onKeyDown>(window, 2);
        else
            disconnect<&Keyboard::onKeyDown>(window, victim);
        return 0;
    });
    connect<&Keyboard::onKeyDown>(window, victim, &Receiver::slot);
    emit<&Keyboard::onKeyDown>(window, 1);
    EXPECT_TRUE(victim.keys.empty());
}

} // namespace
