#include "explorer/builddialog.h"

#include <chrono>
#include <filesystem>

#include <oviapi/text.h>

#include "explorer/databasesession.h"

namespace {

constexpr int breather = 2; // ms for the window between two pieces of work
constexpr std::chrono::milliseconds workTime(25);
constexpr int barHeight = 16; // px

TextId textOfStage(SampleBuilder::Stage stage)
{
    switch (stage) {
    case SampleBuilder::Stage::Packages:
        return TextBuildPackages;
    case SampleBuilder::Stage::Releases:
        return TextBuildReleases;
    case SampleBuilder::Stage::Places:
        return TextBuildPlaces;
    case SampleBuilder::Stage::Measurements:
        return TextBuildMeasurements;
    default:
        return TextBuildIndexes;
    }
}

} // namespace

BuildDialog::BuildDialog(WExtForm& above, MachineData machine, const std::filesystem::path& target)
    : ExplorerDialog(above)
    , m_builder(std::move(machine), target)
    , m_timer(breather)
{
    OviAPI::connect<&OviAPI::WTimer::onTimer>(m_timer, *this, &BuildDialog::work);
}

bool BuildDialog::create()
{
    return ExplorerDialog::create() && m_timer.start();
}

void BuildDialog::createControls()
{
    m_prompt.setStyle(OviAPI::WStatic::WordWrap);
    for (OviAPI::WTypicalControl* control :
         std::initializer_list<OviAPI::WTypicalControl*>{&m_prompt, &m_bar, &m_stage, &m_cancel})
        add(*control);
    OviAPI::connect<&OviAPI::WButton::onPush>(m_cancel, *this, &BuildDialog::onCancelPush);
}

void BuildDialog::loadTexts()
{
    setTitle(textOf(TextBuildTitle).c_str());
    m_prompt.setText(textOf(TextBuildPrompt).c_str());
    m_cancel.setText(textOf(TextDialogCancel).c_str());
    showStage();
}

int BuildDialog::layout(int width)
{
    int top = Margin;
    const int prompt = wrappedHeight(m_prompt.text(), width);
    m_prompt.move(Margin, top, width, prompt);
    top += prompt + Gap;
    m_bar.move(Margin, top, width, barHeight);
    top += barHeight + Gap;
    m_stage.move(Margin, top, width, textHeight() + 2);
    return layoutButtons({&m_cancel}, width, top + textHeight() + 2 + Gap);
}

OviAPI::SlotResult BuildDialog::work(OviAPI::Object*)
{
    const auto end = std::chrono::steady_clock::now() + workTime;
    try {
        do {
            if (!m_builder.step()) {
                m_timer.stop();
                closeModal(1);
                return 1;
            }
        } while (std::chrono::steady_clock::now() < end);
        showStage();
        return 1;
    } catch (const DorCPP::DorX& x) {
        m_failure = messageOf(x);
    } catch (const std::filesystem::filesystem_error& error) {
        m_failure = OviAPI::localeToWide(error.what());
    }
    m_timer.stop();
    closeModal(0);
    return 1;
}

OviAPI::SlotResult BuildDialog::onCancelPush(OviAPI::Object*)
{
    closeModal(0);
    return 1;
}

void BuildDialog::showStage()
{
    m_stage.setText(textOf(textOfStage(m_builder.stage())).c_str());
    m_bar.setPercent(m_builder.percent());
}
