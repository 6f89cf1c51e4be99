// What forms cost beside the toolkit's own: a change of the font of a form with 1,000 nested
// controls, and making, showing and closing a dialog, 1,000 times. Usage: forms_bench [steps]
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include <oviapi/application.h>
#include <oviapi/button.h>
#include <oviapi/checkbox.h>
#include <oviapi/lineedit.h>
#include <oviapi/panel.h>
#include <oviapi/static.h>

#include "app/extdialog.h"
#include "forms_peer.h"

using namespace OviAPI;

namespace {

constexpr double limit = 1.5;

// Owns the controls of one form.
class NestedForm : public WExtForm {
public:
    NestedForm()
    {
        setFont({Forms::font, Forms::fontSize});
        move(0, 0, Forms::width, Forms::height);
        create();
        for (int chain = 0; chain < Forms::chains; ++chain) {
            Container* above = this;
            for (int deep = 0; deep < Forms::panelsDeep; ++deep) {
                auto& panel = add<WPanel>(*above, deep == 0 ? chain * Forms::chainStep : 2, 2,
                                          Forms::chainStep, Forms::height);
                fillPanel(panel);
                above = &panel;
            }
        }
    }

private:
    template<class Control>
    Control& add(Container& above, int x, int y, int w, int h)
    {
        auto control = std::make_unique<Control>();
        Control& added = *control;
        m_controls.push_back(std::move(control));
        added.setParent(&above);
        added.move(x, y, w, h);
        added.create();
        return added;
    }
    template<class Control>
    void addNamed(WPanel& panel, int row, const wchar_t* text)
    {
        add<Control>(panel, 0, row * Forms::controlStep, Forms::controlWidth, Forms::controlHeight)
            .setText(text);
    }
    void fillPanel(WPanel& panel)
    {
        for (int i = 0; i < Forms::controlsInPanel; ++i) {
            if (i % 3 == 0)
                addNamed<WStatic>(panel, i, L"Label");
            else if (i % 3 == 1)
                addNamed<WLineEdit>(panel, i, L"Field");
            else
                addNamed<WButton>(panel, i, L"Button");
        }
    }

    std::vector<std::unique_ptr<WVisualObject>> m_controls;
};

class Question : public WExtDialog {
public:
    Question()
        : WExtDialog(0, nullptr)
    {
        setFont({Forms::font, Forms::fontSize});
        setTitle(L"Question");
        move(0, 0, Forms::dialogWidth, Forms::dialogHeight);
        create();
        put(m_panel, *this, 0, 0, Forms::dialogWidth, Forms::dialogHeight);
        put(m_label, m_panel, 10, 10, 380, 22);
        m_label.setText(L"Question?");
        put(m_edit, m_panel, 10, 40, 380, 24);
        m_edit.setText(L"Answer");
        put(m_box, m_panel, 10, 70, 380, 22);
        m_box.setText(L"&Remember");
        put(m_yes, m_panel, 100, 110, 90, 26);
        m_yes.setText(L"&Yes");
        put(m_no, m_panel, 200, 110, 90, 26);
        m_no.setText(L"&No");
        setDefaultButton(&m_yes);
        m_yes.setFocus();
    }
    bool onPost(void*) override { return close(); }

private:
    static void put(WVisualObject& object, Container& above, int x, int y, int w, int h)
    {
        object.setParent(&above);
        object.move(x, y, w, h);
        object.create();
    }

    WPanel m_panel;
    WStatic m_label;
    WLineEdit m_edit;
    WCheckBox m_box;
    WButton m_yes;
    WButton m_no;
};

double fontChange(int steps)
{
    NestedForm form;
    form.show(true);
    Application::procTaskEvents();
    int size = Forms::fontSize;
    return medianCpuMs(steps, [&] {
        size = 2 * Forms::fontSize + 1 - size;
        form.setFont({Forms::font, size});
        form.setSiblingsFont(&form, WExtForm::fkControls, {Forms::font, size});
        Application::procTaskEvents();
    });
}

Forms::DialogTimes dialogs()
{
    return Forms::measureDialogs([] {
        Question question;
        question.post(nullptr);
        question.execModal();
    });
}

void print(const char* what, const Forms::DialogTimes& times, double peer)
{
    const double each = median(times.hundreds) / 100;
    std::printf("%-34s %7.3f ms each  x %5.2f   first hundred %7.3f  last %7.3f   ", what, each,
                each / peer, times.hundreds.front() / 100, times.hundreds.back() / 100);
    std::printf("resident %ld, %ld, %ld KiB\n", times.residentKiB[0], times.residentKiB[1],
                times.residentKiB[2]);
}

} // namespace

int main(int argc, char** argv)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    Application application;
    application.start(argc, argv);
    const int steps = argc > 1 ? std::atoi(argv[1]) : 41;
    const double peerFont = Forms::peerFontChange(steps);
    const double ownFont = fontChange(steps);
    std::printf("%-34s %7.3f ms each\n", "toolkit: font of 1,000 controls", peerFont);
    std::printf("%-34s %7.3f ms each  x %5.2f\n", "form: font of 1,000 controls", ownFont,
                ownFont / peerFont);
    const Forms::DialogTimes own = dialogs();
    const Forms::DialogTimes peer = Forms::peerDialogs();
    const double peerEach = median(peer.hundreds) / 100;
    print("toolkit: dialog", peer, peerEach);
    print("form: dialog", own, peerEach);
    const bool held = ownFont / peerFont <= limit && median(own.hundreds) / 100 / peerEach <= limit;
    return held ? 0 : 1;
}
