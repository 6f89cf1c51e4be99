// The explorer's application object.
#pragma once

#include <memory>

#include <oviapi/timer.h>

#include "app/extapp.h"
#include "explorer/arguments.h"
#include "explorer/exploreroptions.h"
#include "explorer/mainform.h"

class Tour;

// Owns the options and the main window. On a tour the user's settings are neither read nor written.
class ExplorerApp : public ExtApp {
public:
    explicit ExplorerApp(Arguments arguments);
    ~ExplorerApp() override;

    const wchar_t* appName() override { return L"oviexplorer"; }
    void initBeforeOptions() override;
    void deInitAfterOptions() override;
    TypicalOptions* options() override { return &m_options; }
    void loadOptions() override;
    void saveOptions() override;
    bool adaptToTD() override;
    void initAfterOptions() override;
    void deInitApplication() override;

    MainForm* mainForm() { return m_form.get(); }

private:
    OviAPI::SlotResult onStarted(OviAPI::Object*);

    Arguments m_arguments;
    ExplorerOptions m_options;
    std::unique_ptr<MainForm> m_form;
    std::unique_ptr<Tour> m_tour;
    OviAPI::WTimer m_started; // fires once, when the event loop runs
};
