// A form for tests of single controls.
#pragma once

#include <gtest/gtest.h>

#include <oviapi/form.h>

#include "tests/support/uidriver.h"

struct FormTest : ::testing::Test {
    OviAPI::WForm form;

    explicit FormTest(int width = 500, int height = 400)
    {
        form.move(0, 0, width, height);
        EXPECT_TRUE(form.create());
        UiDriver::showAndActivate(form);
    }
    template<class T>
    T& made(T& control, int x = 10, int y = 10, int w = 150, int h = 30)
    {
        control.setParent(&form);
        control.move(x, y, w, h);
        EXPECT_TRUE(control.create());
        return control;
    }
};

// Counts what a signal sends, and answers it.
struct Counter : OviAPI::Object {
    int calls = 0;
    int answer = 0;

    template<auto Signal, class Sender>
    void listen(Sender& sender)
    {
        OviAPI::connect<Signal>(sender, *this, [this](OviAPI::Object*, auto...) {
            ++calls;
            return OviAPI::SlotResult(answer);
        });
    }
};
