// Fonts, language, and the answers that are remembered.
#pragma once

#include <array>
#include <functional>
#include <vector>

#include <oviapi/combobox.h>
#include <oviapi/listbox.h>
#include <oviapi/panel.h>
#include <oviapi/spinbox.h>
#include <oviapi/tabcontrol.h>

#include "explorer/explorerdialog.h"
#include "explorer/exploreroptions.h"

// What the dialog changes.
struct Settings {
    static constexpr size_t FontCount = 4;
    static constexpr int SmallestText = 6; // points
    static constexpr int LargestText = 40;

    std::array<OviAPI::Font, FontCount> fonts; // by WExtForm::FontKind
    enum TypicalOptions::Language language = TypicalOptions::DefaultLanguage;
    TypicalConfirm adaptToScreen;
    TypicalConfirm removeConnection;
    TypicalConfirm deleteRow;

    static Settings of(const ExplorerOptions& options);
    // The fonts and the language of a new user; his own answers.
    static Settings defaults(const ExplorerOptions& options);
    void storeIn(ExplorerOptions& options) const;

    bool operator==(const Settings&) const = default;
};

// Every change takes effect at once, in the options and, through a function, in what is on the
// screen; Cancel takes back what was changed since the last Apply. execModal gives 1 for OK.
class SettingsDialog : public ExplorerDialog {
public:
    // changed: shows what the options say now. Called after every change.
    SettingsDialog(WExtForm& above, ExplorerOptions& options, std::function<void()> changed);

    bool onClose() override;

    OviAPI::WTabControl& tabs() { return m_tabs; }
    OviAPI::WComboBox& faceList(FontKind kind) { return m_rows[static_cast<size_t>(kind)].face; }
    OviAPI::WSpinBox& sizeField(FontKind kind) { return m_rows[static_cast<size_t>(kind)].size; }
    OviAPI::WComboBox& languageList() { return m_language; }
    const OviAPI::WStatic& sample() const { return m_sample; }
    OviAPI::WListBox& answerList() { return m_answers; }
    OviAPI::WButton& askAgainButton() { return m_askAgain; }
    OviAPI::WButton& askAllButton() { return m_askAll; }
    OviAPI::WButton& applyButton() { return m_apply; }
    OviAPI::WButton& defaultsButton() { return m_defaults; }

protected:
    void createControls() override;
    void loadTexts() override;
    int layout(int width) override;
    int contentWidth() const override { return scaled(520); }

private:
    struct FontRow {
        OviAPI::WStatic label;
        OviAPI::WComboBox face;
        OviAPI::WSpinBox size;
    };

    OviAPI::SlotResult onFontChange(OviAPI::Object*, size_t kind);
    OviAPI::SlotResult onLanguage(OviAPI::Object*);
    OviAPI::SlotResult onAskAgainPush(OviAPI::Object*);
    OviAPI::SlotResult onAskAllPush(OviAPI::Object*);
    OviAPI::SlotResult onDefaultsPush(OviAPI::Object*);
    OviAPI::SlotResult onOkPush(OviAPI::Object*);
    OviAPI::SlotResult onCancelPush(OviAPI::Object*);
    OviAPI::SlotResult onApplyPush(OviAPI::Object*);

    void createAppearance();
    void createAnswers();
    // Makes the controls say what the settings are.
    void fill();
    void fillAnswers();
    void take(const Settings& now);
    void showSample(size_t kind);
    int layoutAppearance(int width);
    int layoutAnswers(int width);

    ExplorerOptions& m_options;
    std::function<void()> m_changed;
    Settings m_before; // to go back to
    Settings m_now;
    bool m_filling = false;
    size_t m_sampleKind = 0;
    std::vector<TypicalConfirm Settings::*> m_lines; // the answers in the list

    OviAPI::WTabControl m_tabs;
    OviAPI::WPanel m_appearance;
    std::array<FontRow, Settings::FontCount> m_rows;
    OviAPI::WStatic m_languageLabel;
    OviAPI::WComboBox m_language;
    OviAPI::WStatic m_sampleLabel;
    OviAPI::WStatic m_sample;
    OviAPI::WPanel m_answersPage;
    OviAPI::WStatic m_answersLabel;
    OviAPI::WListBox m_answers;
    OviAPI::WButton m_askAgain;
    OviAPI::WButton m_askAll;
    OviAPI::WButton m_defaults;
    OviAPI::WButton m_ok;
    OviAPI::WButton m_cancel;
    OviAPI::WButton m_apply;
};
