#include "application.h"

#include <chrono>
#include <deque>

#include <QApplication>
#include <QMessageBox>
#include <QTimer>

#include <gtest/gtest.h>

#include <oviapi/form.h>
#include <oviapi/timer.h>

TestApplication::TestApplication(int argc, char** argv)
{
    start(argc, argv);
    record.initDefaults();
    record.Language = TypicalOptions::DefaultLanguage;
    initResourceManager();
}

TestApplication& TestApplication::get()
{
    return dynamic_cast<TestApplication&>(*OviAPI::Application::instance());
}

bool waitFor(const std::function<bool()>& condition)
{
    OviAPI::WTimer pulse(5);
    pulse.start();
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        OviAPI::Application::procTaskEvents();
    }
    return true;
}

void settle()
{
    int rounds = 0;
    waitFor([&rounds] { return ++rounds > 5; });
}

struct Script::State {
    struct Step {
        std::function<bool()> condition;
        std::function<void()> act;
    };

    void tick()
    {
        if (steps.empty()) {
            timer.stop();
            return;
        }
        if (steps.front().condition()) {
            const Step step = std::move(steps.front());
            steps.pop_front();
            since = std::chrono::steady_clock::now();
            step.act();
        } else if (std::chrono::steady_clock::now() - since > std::chrono::seconds(10)) {
            ADD_FAILURE() << "a step of the script waits in vain, " << steps.size() << " are left";
            steps.clear();
            if (OviAPI::WForm* modal = OviAPI::WForm::topModal())
                modal->exitModal(0);
        }
    }

    QTimer timer;
    std::deque<Step> steps;
    std::chrono::steady_clock::time_point since;
};

Script::Script()
    : m_state(std::make_unique<State>())
{
    QObject::connect(&m_state->timer, &QTimer::timeout, [this] { m_state->tick(); });
}

Script::~Script() = default;

void Script::step(std::function<bool()> condition, std::function<void()> act)
{
    if (m_state->steps.empty())
        m_state->since = std::chrono::steady_clock::now();
    m_state->steps.push_back({std::move(condition), std::move(act)});
    m_state->timer.start(10);
}

bool Script::isDone() const
{
    return m_state->steps.empty();
}

struct BoxReader::Timer {
    QTimer timer;
};

BoxReader::BoxReader()
    : m_timer(std::make_unique<Timer>())
{
    QObject::connect(&m_timer->timer, &QTimer::timeout, [this] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box)
            return;
        m_titles.push_back(box->windowTitle().toStdWString());
        m_texts.push_back(box->text().toStdWString());
        box->accept();
    });
    m_timer->timer.start(5);
}

BoxReader::~BoxReader() = default;
