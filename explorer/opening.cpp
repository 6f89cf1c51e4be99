#include "explorer/opening.h"

#include <chrono>
#include <system_error>

#include <oviapi/application.h>
#include <oviapi/text.h>
#include <oviapi/timer.h>

#include "explorer/explorerdialog.h"

namespace {

constexpr std::chrono::seconds dialogAfter(1);
constexpr int lookInterval = 20; // ms

// Says what is being opened; closed with 1 when it is, with 0 by the user.
class OpeningDialog : public ExplorerDialog {
public:
    OpeningDialog(WExtForm& above, std::wstring name, std::function<bool()> isOver)
        : ExplorerDialog(above)
        , m_name(std::move(name))
        , m_isOver(std::move(isOver))
        , m_timer(lookInterval)
    {
        OviAPI::connect<&OviAPI::WTimer::onTimer>(m_timer, *this, &OpeningDialog::look);
        m_timer.start();
    }

protected:
    void createControls() override
    {
        m_prompt.setStyle(OviAPI::WStatic::WordWrap);
        add(m_prompt);
        add(m_cancel);
        OviAPI::connect<&OviAPI::WButton::onPush>(m_cancel, *this, &OpeningDialog::onCancelPush);
        m_cancel.setFocus();
    }
    void loadTexts() override
    {
        setTitle(textOf(TextOpeningTitle).c_str());
        m_prompt.setText(textOf(TextOpeningPrompt, m_name).c_str());
        m_cancel.setText(textOf(TextDialogCancel).c_str());
    }
    int layout(int width) override
    {
        const int prompt = wrappedHeight(m_prompt.text(), width);
        m_prompt.move(Margin, Margin, width, prompt);
        return layoutButtons({&m_cancel}, width, Margin + prompt + Gap);
    }

private:
    OviAPI::SlotResult look(OviAPI::Object*)
    {
        if (m_isOver()) {
            m_timer.stop();
            closeModal(1);
        }
        return 1;
    }
    OviAPI::SlotResult onCancelPush(OviAPI::Object*)
    {
        closeModal(0);
        return 1;
    }

    std::wstring m_name;
    std::function<bool()> m_isOver;
    OviAPI::WTimer m_timer;
    OviAPI::WStatic m_prompt;
    OviAPI::WButton m_cancel;
};

} // namespace

// Written by the thread until its end.
struct BackgroundOpening::Answer {
    std::unique_ptr<DatabaseSession> session;
    std::exception_ptr failure;
};

BackgroundOpening::BackgroundOpening(Open open)
    : m_answer(std::make_shared<Answer>())
{
    try {
        m_task = std::make_unique<BackgroundTask>([answer = m_answer, open = std::move(open)] {
            try {
                answer->session = open();
            } catch (...) { // thrown again by result
                answer->failure = std::current_exception();
            }
        });
    } catch (const std::system_error& error) {
        throw OpenFailure(TextErrorOther, OviAPI::localeToWide(error.what()));
    }
}

std::unique_ptr<DatabaseSession> BackgroundOpening::result()
{
    if (m_answer->failure)
        std::rethrow_exception(m_answer->failure);
    return std::move(m_answer->session);
}

std::unique_ptr<DatabaseSession> Opening::run(const std::wstring& name,
                                              BackgroundOpening::Open open)
{
    if (m_running)
        return nullptr;
    struct Running {
        explicit Running(bool& set)
            : flag(set)
        {
            flag = true;
        }
        ~Running() { flag = false; }
        bool& flag;
    } const running(m_running);

    m_givenUp = false;
    BackgroundOpening opening(std::move(open));
    const auto isOver = [&] { return opening.isDone() || m_givenUp; };
    OviAPI::WTimer pulse(lookInterval); // wakes the wait for the dialog
    pulse.start();
    const auto started = std::chrono::steady_clock::now();
    while (!isOver() && std::chrono::steady_clock::now() - started < dialogAfter)
        OviAPI::Application::procTaskEvents();
    pulse.stop();
    if (!isOver()) {
        OpeningDialog dialog(m_above, name, isOver);
        if (!dialog.create() || dialog.execModal() != 1)
            m_givenUp = true;
    }
    return m_givenUp ? nullptr : opening.result();
}
