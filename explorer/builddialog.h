// Shows how the sample database is made, and makes it.
#pragma once

#include <string>

#include <oviapi/timer.h>

#include "explorer/explorerdialog.h"
#include "explorer/progressbar.h"
#include "explorer/samplebuilder.h"

// Works between the events of its window. execModal gives 1 when the database is complete, 0 when
// the user has stopped it or it failed.
class BuildDialog : public ExplorerDialog {
public:
    BuildDialog(WExtForm& above, MachineData machine, const std::filesystem::path& target);

    bool create() override;
    // What went wrong; empty when nothing did.
    const std::wstring& failure() const { return m_failure; }

protected:
    void createControls() override;
    void loadTexts() override;
    int layout(int width) override;

private:
    OviAPI::SlotResult work(OviAPI::Object*);
    OviAPI::SlotResult onCancelPush(OviAPI::Object*);
    void showStage();

    SampleBuilder m_builder;
    std::wstring m_failure;
    OviAPI::WTimer m_timer;
    OviAPI::WStatic m_prompt;
    ProgressBar m_bar;
    OviAPI::WStatic m_stage;
    OviAPI::WButton m_cancel;
};
