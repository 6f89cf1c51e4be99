#include <oviapi/colordialog.h>

#include "tests/platform/oviapi/fields_support.h"

namespace {

using namespace OviAPI;

struct ColorChoice : FormTest {
    // What execModal returns when the function is run in its loop.
    static int run(ColorDialog& dialog, std::function<void()> act)
    {
        UiDriver::later([&dialog, act = std::move(act)] {
            UiDriver::waitUntil([&dialog] {
                const WVisualObject* focused = UiDriver::focused();
                return focused && focused->parent() == static_cast<Container*>(&dialog);
            });
            act();
        });
        return dialog.execModal();
    }
};

TEST_F(ColorChoice, EnterTakesTheColorAndEscapeDoesNot)
{
    ColorDialog dialog(Color(10, 20, 30));
    EXPECT_EQ(run(dialog, [&] { UiDriver::key(dialog, KeyEnter); }), 1);
    EXPECT_EQ(dialog.color(), Color(10, 20, 30));
    EXPECT_EQ(run(dialog, [&] { UiDriver::closeWindow(dialog); }), 0);
}

TEST_F(ColorChoice, TheArrowsGoThroughTheColors)
{
    ColorDialog dialog; // black is the first one
    Counter counter;
    counter.listen<&ColorDialog::onColorChanged>(dialog);
    run(dialog, [&] {
        UiDriver::key(dialog, KeyEnd);
        UiDriver::key(dialog, KeyRight);
        EXPECT_EQ(dialog.color(), Color::White);
        UiDriver::key(dialog, KeyHome);
        for (int i = 0; i < 3; ++i)
            UiDriver::key(dialog, KeyDown);
        UiDriver::key(dialog, KeyEnter);
    });
    EXPECT_EQ(dialog.color(), Color(255, 0, 0));
    EXPECT_EQ(counter.calls, 5);
}

TEST_F(ColorChoice, ComponentsAndCodeAreTyped)
{
    ColorDialog dialog;
    run(dialog, [&] {
        UiDriver::key(dialog, KeyA + 'G' - 'A', ModifierAlt);
        UiDriver::processEvents();
        UiDriver::type(dialog, L"128");
        EXPECT_EQ(dialog.color(), Color(0, 128, 0));
        UiDriver::key(dialog, KeyA + 'C' - 'A', ModifierAlt);
        UiDriver::processEvents();
        UiDriver::key(dialog, KeyTab);
        dialog.exitModal(1);
    });
    EXPECT_EQ(dialog.color(), Color(0, 128, 0));
}

TEST_F(ColorChoice, AColorByNumberComesOutWithComponents)
{
    ColorDialog dialog{Color(ColorNumber::Field)};
    EXPECT_EQ(dialog.color().number(), 0);
    EXPECT_EQ(dialog.color().rgb(), Color(ColorNumber::Field).rgb());
}

TEST_F(ColorChoice, RunsInsideAnotherModalForm)
{
    WForm outer;
    outer.move(0, 0, 200, 100);
    ASSERT_TRUE(outer.create());
    int inner = -1;
    UiDriver::later([&] {
        ColorDialog dialog;
        inner = run(dialog, [&] {
            EXPECT_EQ(WForm::topModal(), &dialog);
            UiDriver::key(dialog, KeyEnter);
        });
        outer.exitModal(7);
    });
    EXPECT_EQ(outer.execModal(), 7);
    EXPECT_EQ(inner, 1);
}

TEST_F(ColorChoice, MayDieWhileItRuns)
{
    auto dialog = std::make_unique<ColorDialog>();
    connect<&ColorDialog::onColorChanged>(*dialog, form, [&](Object*) -> SlotResult {
        dialog.reset();
        return 0;
    });
    ColorDialog& running = *dialog;
    EXPECT_EQ(run(running, [&] { UiDriver::key(running, KeyEnd); }), 0);
    EXPECT_FALSE(dialog);
}

} // namespace
