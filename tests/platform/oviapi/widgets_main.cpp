#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <memory>

#include <oviapi/application.h>
#include <oviapi/form.h>
#include <oviapi/lineedit.h>
#include <oviapi/menu.h>
#include <oviapi/socketnotifier.h>
#include <oviapi/text.h>
#include <oviapi/timer.h>

#include "tests/support/uidriver.h"

namespace {

using namespace OviAPI;

// What the tests run in a process of its own, since it has to do with the start of the toolkit.

int printLocale(int argc, char** argv)
{
    Application application;
    application.start(argc, argv);
    std::printf("%s %s %g %s", std::setlocale(LC_NUMERIC, nullptr),
                std::setlocale(LC_CTYPE, nullptr), 1.5,
                localeToWide("\xD0\x96") == L"\x416" ? "wide" : "bytes");
    return 0;
}

int restart(int argc, char** argv)
{
    WForm form;
    WLineEdit edit;
    WMenu menu;
    WTimer timer(1);
    SocketNotifier notifier(0);
    menu.insertItem(nullptr, L"item");
    int role = 0;
    form.move(0, 0, 100, 100);
    for (int round = 1; round <= 2; ++round) {
        Application application;
        if (timer.start())
            return 2; // nothing runs before the application
        application.start(argc, argv);
        edit.setParent(&form);
        if (!form.create() || !edit.create() || !timer.start())
            return 3;
        form.setMenu(&menu);
        form.show(true);
        edit.setText(round == 1 ? L"first" : (edit.text() + L" second").c_str());
        Application::procTaskEvents();
        if (round == 2 && UiDriver::accessibleRole(form) != role)
            return 5;
        role = UiDriver::accessibleRole(form);
    }
    if (form.isCreated() || timer.isRunning() || form.create())
        return 4;
    std::printf("%s", wideToUtf8(edit.text()).c_str());
    return 0;
}

int runToTheEnd(int argc, char** argv)
{
    struct Program : Application {
        WForm form;
        WTimer timer{5};
        bool initApplication(int count, wchar_t** values) override
        {
            std::printf("init %d %s,", count, wideToUtf8(values[count - 1]).c_str());
            if (std::wcscmp(values[count - 1], L"fail") == 0)
                return false;
            form.move(0, 0, 100, 100);
            form.create();
            form.show(true);
            connect<&WTimer::onTimer>(timer, form, [this](Object*) -> SlotResult {
                timer.stop();
                if (form.close())
                    std::printf("closed,");
                return 0;
            });
            return timer.start();
        }
        void deInitApplication() override { std::printf("deinit,"); }
    };
    auto program = std::make_unique<Program>();
    const int result = program->run(argc, argv);
    std::printf("%d", result);
    return 0;
}

} // namespace

// One application serves all tests.
int main(int argc, char** argv)
{
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    const char* task = argc > 1 ? argv[1] : "";
    if (std::strcmp(task, "print-locale") == 0)
        return printLocale(argc, argv);
    if (std::strcmp(task, "restart") == 0)
        return restart(argc, argv);
    if (std::strcmp(task, "run") == 0)
        return runToTheEnd(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    Application application;
    application.start(argc, argv);
    return RUN_ALL_TESTS();
}
