// A window for the tests of panels.
#pragma once

#include <gtest/gtest.h>

#include <oviapi/color.h>
#include <oviapi/font.h>
#include <oviapi/palette.h>

#include "app/extform.h"
#include "tests/support/uidriver.h"

class PanelForm : public testing::Test {
protected:
    PanelForm()
    {
        form.move(0, 0, 400, 300);
        form.setFont({L"Helvetica", 10});
        EXPECT_TRUE(form.create());
    }
    OviAPI::Color colorAt(int x, int y)
    {
        const uint32_t rgb = UiDriver::pixel(form, x, y);
        return {static_cast<int>(rgb >> 16), static_cast<int>(rgb >> 8), static_cast<int>(rgb)};
    }
    bool isBackground(int x, int y)
    {
        return colorAt(x, y).rgb() == OviAPI::Color(OviAPI::ColorNumber::Window).rgb();
    }
    // Whether what is at the point can be told from the background.
    bool isFrame(int x, int y)
    {
        return OviAPI::contrast(colorAt(x, y), OviAPI::Color(OviAPI::ColorNumber::Window)) >= 2;
    }
    static OviAPI::Rect placed(int left, int top, int width, int height)
    {
        return {left, top, left + width, top + height};
    }

    WExtForm form;
};
