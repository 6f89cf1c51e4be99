// The application of the explorer's tests, and the ways of a test to its windows.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/extapp.h"
#include "explorer/exploreroptions.h"

// Made by main for all tests, with the resources of the build.
class TestApplication : public ExtApp {
public:
    TestApplication(int argc, char** argv);
    static TestApplication& get();

    const wchar_t* appName() override { return L"explorer-test"; }
    void initBeforeOptions() override {}
    void deInitAfterOptions() override {}
    void initAfterOptions() override {}
    TypicalOptions* options() override { return &record; }

    ExplorerOptions record;
};

// Handles events until the condition holds. False when it does not within ten seconds.
bool waitFor(const std::function<bool()>& condition);
// Handles events for a moment.
void settle();

// What a user does in windows that block the test: each step is taken by the event loop as soon as
// its condition holds. A step whose condition does not hold within ten seconds fails the test and
// closes what is modal.
class Script {
public:
    Script();
    ~Script();
    Script(const Script&) = delete;
    Script& operator=(const Script&) = delete;

    void step(
        std::function<bool()> condition, std::function<void()> act = [] {});
    bool isDone() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

// Answers every message box with Enter while it lives, and keeps what they said.
class BoxReader {
public:
    BoxReader();
    ~BoxReader();
    BoxReader(const BoxReader&) = delete;
    BoxReader& operator=(const BoxReader&) = delete;

    const std::vector<std::wstring>& texts() const { return m_texts; }
    const std::vector<std::wstring>& titles() const { return m_titles; }
    std::wstring last() const { return m_texts.empty() ? std::wstring() : m_texts.back(); }

private:
    struct Timer;
    std::unique_ptr<Timer> m_timer;
    std::vector<std::wstring> m_titles;
    std::vector<std::wstring> m_texts;
};
