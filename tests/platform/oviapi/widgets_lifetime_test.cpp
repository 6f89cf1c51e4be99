#include <oviapi/application.h>
#include <oviapi/button.h>
#include <oviapi/checkbox.h>
#include <oviapi/dialog.h>
#include <oviapi/form.h>
#include <oviapi/lineedit.h>
#include <oviapi/listbox.h>
#include <oviapi/menu.h>
#include <oviapi/panel.h>
#include <oviapi/static.h>
#include <oviapi/timer.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "tests/support/uidriver.h"

namespace {

using namespace OviAPI;

struct Receiver : Object {};

void showForm(WForm& form)
{
    form.move(0, 0, 300, 200);
    EXPECT_TRUE(form.create());
    UiDriver::showAndActivate(form);
}

std::unique_ptr<WForm> shownForm()
{
    auto form = std::make_unique<WForm>();
    showForm(*form);
    return form;
}

// Calls the function when the sender emits the signal, as long as the receiver lives.
template<auto Signal, class Sender>
std::unique_ptr<Receiver> when(Sender& sender, std::function<void()> function)
{
    auto receiver = std::make_unique<Receiver>();
    connect<Signal>(sender, *receiver, [function](Object*) -> SlotResult {
        function();
        return 0;
    });
    return receiver;
}

template<class T>
std::unique_ptr<T> child(Container& parent)
{
    auto object = std::make_unique<T>();
    object->setStyle(object->style() | WPanel::TabStop);
    object->setParent(&parent);
    object->move(10, 10, 100, 30);
    EXPECT_TRUE(object->create());
    return object;
}

// A panel that is deleted by its own virtual functions.
struct Suicidal : WPanel {
    std::function<void()> end;

    bool last(bool answer)
    {
        if (end)
            end();
        return answer;
    }
    bool onLButtonDown(int, int, long) override { return last(false); }
    bool onKeyDown(VirtualKey) override { return last(false); }
    bool onGetFocus() override { return focusEnds && last(false); }
    bool onMove() override { return last(true); }
    bool onShow(bool) override { return last(true); }

    bool focusEnds = false;
};

TEST(Lifetime, AnObjectMayDeleteItselfWhenItIsPressed)
{
    auto form = shownForm();
    auto panel = child<Suicidal>(*form);
    panel->end = [&] { panel.reset(); };
    UiDriver::click(*panel, 5, 5);
    EXPECT_EQ(panel, nullptr);
    EXPECT_EQ(form->firstChild(), nullptr);
}

TEST(Lifetime, AnObjectMayDeleteItselfInAKey)
{
    auto form = shownForm();
    auto panel = child<Suicidal>(*form);
    panel->setFocus();
    panel->end = [&] { panel.reset(); };
    UiDriver::key(*form, KeyA);
    EXPECT_EQ(panel, nullptr);
}

TEST(Lifetime, AnObjectMayDeleteItselfWhenItGetsTheFocus)
{
    auto form = shownForm();
    auto panel = child<Suicidal>(*form);
    panel->focusEnds = true;
    panel->end = [&] { panel.reset(); };
    UiDriver::click(*panel, 5, 5);
    EXPECT_EQ(panel, nullptr);
}

TEST(Lifetime, AnObjectMayDeleteItselfWhenItIsMovedOrShown)
{
    auto form = shownForm();
    auto panel = child<Suicidal>(*form);
    panel->end = [&] { panel.reset(); };
    panel->move(0, 0, 5, 5);
    EXPECT_EQ(panel, nullptr);
    panel = child<Suicidal>(*form);
    panel->end = [&] { panel.reset(); };
    panel->show(false);
    EXPECT_EQ(panel, nullptr);
}

TEST(Lifetime, ASlotMayDeleteTheForm)
{
    auto form = shownForm();
    auto button = child<WButton>(*form);
    const auto receiver = when<&WButton::onPush>(*button, [&] {
        button.reset();
        form.reset();
    });
    UiDriver::click(*button);
    EXPECT_EQ(form, nullptr);
    EXPECT_EQ(button, nullptr);
}

TEST(Lifetime, APushMayDeleteTheFormBeforeItsButton)
{
    auto form = shownForm();
    auto button = child<WButton>(*form);
    const auto receiver = when<&WButton::onPush>(*button, [&] { form.reset(); });
    UiDriver::click(*button);
    EXPECT_FALSE(button->isCreated());
    EXPECT_EQ(button->parent(), nullptr);
}

TEST(Lifetime, AFormMayBeDeletedWhenItIsClosed)
{
    struct Closing : WForm {
        std::function<void()> end;
        bool onClose() override
        {
            end();
            return true;
        }
    };
    auto form = std::make_unique<Closing>();
    showForm(*form);
    form->end = [&] { form.reset(); };
    UiDriver::closeWindow(*form);
    EXPECT_EQ(form, nullptr);
}

TEST(Lifetime, ATimerMayDeleteItself)
{
    auto timer = std::make_unique<WTimer>(1);
    const auto receiver = when<&WTimer::onTimer>(*timer, [&] { timer.reset(); });
    timer->start();
    EXPECT_TRUE(UiDriver::waitUntil([&] { return !timer; }));
}

TEST(Lifetime, AListMayBeDeletedWhenALineIsChosenByMouseOrKey)
{
    for (const bool byKey : {false, true}) {
        auto form = shownForm();
        auto list = child<WListBox>(*form);
        list->insertLine(L"one");
        list->insertLine(L"two");
        list->setCurrentLine(1);
        const auto receiver = when<&WLineList::onSelect>(*list, [&] { list.reset(); });
        list->setFocus();
        if (byKey)
            UiDriver::key(*form, KeyUp);
        else
            UiDriver::click(*list, 10, 5);
        EXPECT_EQ(list, nullptr);
    }
}

TEST(Lifetime, AFieldMayBeDeletedWhileItIsTypedInto)
{
    auto form = shownForm();
    auto edit = child<WLineEdit>(*form);
    const auto receiver = when<&WLineEdit::onTextChanged>(*edit, [&] { edit.reset(); });
    edit->setFocus();
    UiDriver::type(*form, L"x");
    EXPECT_EQ(edit, nullptr);
}

TEST(Lifetime, ACheckBoxMayBeDeletedWhenItIsTicked)
{
    auto form = shownForm();
    auto box = child<WCheckBox>(*form);
    const auto receiver = when<&WCheckBox::onCheck>(*box, [&] { box.reset(); });
    UiDriver::click(*box, 5, 15);
    EXPECT_EQ(box, nullptr);
}

TEST(Lifetime, TheParentMayDieBeforeItsChildren)
{
    auto form = shownForm();
    auto panel = child<WPanel>(*form);
    auto inner = child<WLineEdit>(*panel);
    inner->setText(L"kept");
    form.reset();
    EXPECT_FALSE(panel->isCreated());
    EXPECT_FALSE(inner->isCreated());
    EXPECT_EQ(panel->parent(), nullptr);
    EXPECT_EQ(inner->parent(), panel.get());
    EXPECT_EQ(inner->text(), L"kept");
}

TEST(Lifetime, ChildrenMayDieBeforeTheirParent)
{
    auto form = shownForm();
    auto panel = child<WPanel>(*form);
    auto inner = child<WLineEdit>(*panel);
    inner.reset();
    panel.reset();
    EXPECT_EQ(form->childCount(), 0);
    form.reset();
}

TEST(Lifetime, WhatOutlivedItsParentCanBeCreatedAgainInAnother)
{
    auto first = shownForm();
    auto panel = child<WPanel>(*first);
    auto edit = child<WLineEdit>(*panel);
    first.reset();
    auto second = shownForm();
    panel->setParent(second.get());
    ASSERT_TRUE(panel->create());
    ASSERT_TRUE(edit->create());
    edit->setFocus();
    UiDriver::type(*second, L"ab");
    EXPECT_EQ(edit->text(), L"ab");
}

TEST(Lifetime, AFormAboveMayOutliveTheFormBelow)
{
    auto below = shownForm();
    WForm above;
    above.setParent(below.get());
    showForm(above);
    below.reset();
    EXPECT_EQ(above.parent(), nullptr);
    EXPECT_TRUE(above.isCreated());
    UiDriver::processEvents();
    EXPECT_TRUE(above.isVisible());
}

TEST(Lifetime, NoHandlerIsCalledWhileAFormIsDestroyed)
{
    struct Noisy : WLineEdit {
        explicit Noisy(int& count)
            : calls(count)
        {
        }
        bool onGetFocus() override { return ++calls > 0; }
        bool onLostFocus() override { return ++calls > 0; }
        bool onShow(bool) override { return ++calls > 0; }
        bool onEnable(bool) override { return ++calls > 0; }
        int& calls;
    };
    struct Owner : WForm {
        explicit Owner(int& count)
            : first(count)
            , second(count)
        {
        }
        Noisy first;
        Noisy second;
    };
    int calls = 0;
    {
        Owner owner(calls);
        owner.move(0, 0, 300, 200);
        ASSERT_TRUE(owner.create());
        for (Noisy* edit : {&owner.first, &owner.second}) {
            edit->setParent(&owner);
            edit->move(0, 0, 50, 20);
            ASSERT_TRUE(edit->create());
        }
        UiDriver::showAndActivate(owner);
        owner.second.setFocus();
        UiDriver::processEvents();
        calls = 0;
    }
    UiDriver::processEvents();
    EXPECT_EQ(calls, 0);
}

TEST(Lifetime, TheFocusGoesOnWhenTheChildThatHasItIsDeleted)
{
    auto form = shownForm();
    auto first = child<WLineEdit>(*form);
    auto second = child<WLineEdit>(*form);
    auto third = child<WLineEdit>(*form);
    second->setFocus();
    second.reset();
    UiDriver::processEvents();
    EXPECT_EQ(UiDriver::focused(), third.get());
    third.reset();
    UiDriver::processEvents();
    EXPECT_EQ(UiDriver::focused(), first.get());
}

TEST(Lifetime, TheFocusIsNotTakenFromWhereTheProgramPutIt)
{
    auto form = shownForm();
    auto first = child<WLineEdit>(*form);
    auto second = child<WLineEdit>(*form);
    auto third = child<WLineEdit>(*form);
    second->setFocus();
    second.reset();
    first->setFocus();
    UiDriver::processEvents();
    EXPECT_EQ(UiDriver::focused(), first.get());
}

TEST(Lifetime, ClosingHidesAndKeepsTheForm)
{
    auto form = shownForm();
    UiDriver::closeWindow(*form);
    EXPECT_TRUE(form->isCreated());
    EXPECT_FALSE(form->isVisible());
    form->show(true);
    EXPECT_TRUE(form->isVisible());
}

TEST(Lifetime, AFormThatRefusesToCloseStays)
{
    struct Refusing : WForm {
        int asked = 0;
        bool onClose() override
        {
            ++asked;
            return false;
        }
    };
    Refusing form;
    showForm(form);
    UiDriver::closeWindow(form);
    EXPECT_EQ(form.asked, 1);
    EXPECT_TRUE(form.isVisible());
    EXPECT_FALSE(form.close());
    EXPECT_EQ(form.asked, 2);
}

TEST(Lifetime, TheDefaultButtonMayDieBeforeItsForm)
{
    auto form = shownForm();
    auto button = child<WButton>(*form);
    form->setDefaultButton(button.get());
    EXPECT_TRUE(button->isDefault());
    button.reset();
    EXPECT_EQ(form->defaultButton(), nullptr);
    button = child<WButton>(*form);
    form->setDefaultButton(button.get());
    form.reset();
    EXPECT_FALSE(button->isDefault());
}

TEST(Lifetime, APostedMessageReachesItsReceiverFromTheEventLoop)
{
    struct Mailbox : WPanel {
        std::vector<int> got;
        bool onPost(void* message) override
        {
            std::unique_ptr<int> number(static_cast<int*>(message));
            got.push_back(*number);
            return true;
        }
    };
    Mailbox mailbox;
    mailbox.post(new int(1)); // owned by the receiver
    mailbox.post(new int(2)); // likewise
    EXPECT_TRUE(mailbox.got.empty());
    UiDriver::processEvents();
    EXPECT_EQ(mailbox.got, (std::vector<int>{1, 2}));
}

TEST(Lifetime, AMessageToADeadReceiverIsDiscarded)
{
    static int discarded;
    discarded = 0;
    auto panel = std::make_unique<WPanel>();
    panel->post(new int(1), [](void* message) {
        delete static_cast<int*>(message);
        ++discarded;
    });
    panel.reset();
    EXPECT_EQ(discarded, 0);
    UiDriver::processEvents();
    EXPECT_EQ(discarded, 1);
}

TEST(Lifetime, EveryLivingObjectIsToldThatTextsAreToBeLoadedAgain)
{
    struct Texts : WStatic {
        int changes = 0;
        std::function<void()> also;
        SlotResult onCharsetChanged(Object* sender) override
        {
            ++changes;
            EXPECT_EQ(sender, Application::instance());
            if (also)
                also();
            return 0;
        }
    };
    Texts unCreated;
    auto victim = std::make_unique<Texts>();
    Texts last;
    unCreated.also = [&] { victim.reset(); };
    Application::instance()->notifyCharsetChanged();
    EXPECT_EQ(unCreated.changes, 1);
    EXPECT_EQ(last.changes, 1);
}

} // namespace
