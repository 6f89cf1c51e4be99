#include "explorer/settingsdialog.h"

#include <algorithm>

#include <oviapi/fontfamilies.h>
#include <oviapi/painter.h>

namespace {

constexpr int inner = 12; // px around what stands on a page
constexpr int rowGap = 6;
constexpr int usualSizeWidth = 90; // px, at the usual text size
constexpr int usualFaceWidth = 250;
constexpr int sampleLines = 2; // in the font of controls: the room of the sample
constexpr int answerLines = 5; // seen of the list

// Labels in the order of WExtForm::FontKind.
constexpr TextId kindTexts[] = {TextSettingsControls, TextSettingsTables, TextSettingsTrees,
                                TextSettingsEditors};

// A label's words alone: no mark of a mnemonic, no colon.
std::wstring nameOf(TextId label)
{
    std::wstring name = textOf(label);
    std::erase_if(name, [](wchar_t c) { return c == L'&' || c == L':'; });
    return name;
}

struct Answer {
    TypicalConfirm Settings::*value;
    TextId yes;
    TextId no;
};

constexpr Answer answers[] = {
    {&Settings::adaptToScreen, TextAnswerAdaptYes, TextAnswerAdaptNo},
    {&Settings::removeConnection, TextAnswerRemoveYes, TextAnswerRemoveNo},
    {&Settings::deleteRow, TextAnswerDeleteYes, TextAnswerDeleteNo},
};

OviAPI::Font inRange(const OviAPI::Font& font)
{
    return {
        font.name(),      std::clamp(font.size(), Settings::SmallestText, Settings::LargestText),
        font.bold(),      font.italic(),
        font.underline(), font.strikeout()};
}

// The number of the line with this face, which is inserted in its alphabetical place when it is
// not installed.
int lineOfFace(OviAPI::WComboBox& list, const std::wstring& face)
{
    const int known = list.findText(face.c_str());
    if (known >= 0)
        return known;
    int before = 0;
    while (before < list.lineCount() && list.lineText(before) < face)
        ++before;
    return list.insertLine(face.c_str(), nullptr, before);
}

} // namespace

Settings Settings::of(const ExplorerOptions& options)
{
    return {{inRange(options.FontControls), inRange(options.FontGrid), inRange(options.FontTree),
             inRange(options.FontEdits)},
            options.Language,
            options.AdaptToTD,
            options.RemoveConnection,
            options.DeleteRow};
}

Settings Settings::defaults(const ExplorerOptions& options)
{
    ExplorerOptions fresh;
    fresh.initDefaults();
    Settings settings = of(fresh);
    settings.adaptToScreen = options.AdaptToTD;
    settings.removeConnection = options.RemoveConnection;
    settings.deleteRow = options.DeleteRow;
    return settings;
}

void Settings::storeIn(ExplorerOptions& options) const
{
    options.FontControls = fonts[WExtForm::fkControls];
    options.FontGrid = fonts[WExtForm::fkRecordView];
    options.FontTree = fonts[WExtForm::fkTree];
    options.FontEdits = fonts[WExtForm::fkEdit];
    options.Language = language;
    options.AdaptToTD = adaptToScreen;
    options.RemoveConnection = removeConnection;
    options.DeleteRow = deleteRow;
}

SettingsDialog::SettingsDialog(WExtForm& above, ExplorerOptions& options,
                               std::function<void()> changed)
    : ExplorerDialog(above)
    , m_options(options)
    , m_changed(std::move(changed))
    , m_before(Settings::of(options))
    , m_now(m_before)
{
}

bool SettingsDialog::onClose()
{
    take(m_before);
    return ExplorerDialog::onClose();
}

// --- making the controls, in the order of the Tab key

void SettingsDialog::createControls()
{
    add(m_tabs);
    createAppearance();
    createAnswers();
    for (OviAPI::WTypicalControl* control :
         std::initializer_list<OviAPI::WTypicalControl*>{&m_defaults, &m_ok, &m_cancel, &m_apply})
        add(*control);
    setDefaultButton(&m_ok);
    OviAPI::connect<&OviAPI::WButton::onPush>(m_defaults, *this, &SettingsDialog::onDefaultsPush);
    OviAPI::connect<&OviAPI::WButton::onPush>(m_ok, *this, &SettingsDialog::onOkPush);
    OviAPI::connect<&OviAPI::WButton::onPush>(m_cancel, *this, &SettingsDialog::onCancelPush);
    OviAPI::connect<&OviAPI::WButton::onPush>(m_apply, *this, &SettingsDialog::onApplyPush);
    m_tabs.setFocus();
}

void SettingsDialog::createAppearance()
{
    m_tabs.addTab(L"", &m_appearance);
    m_appearance.create();
    const std::vector<std::wstring> faces = OviAPI::fontFamilies();
    for (size_t kind = 0; kind < m_rows.size(); ++kind) {
        FontRow& row = m_rows[kind];
        add(row.label, m_appearance);
        add(row.face, m_appearance);
        for (const std::wstring& face : faces)
            row.face.insertLine(face.c_str());
        row.size.setRange(Settings::SmallestText, Settings::LargestText);
        add(row.size, m_appearance);
        row.label.setBuddy(&row.face);
        const auto changed = [this, kind](OviAPI::Object* sender) {
            return onFontChange(sender, kind);
        };
        OviAPI::connect<&OviAPI::WLineList::onSelect>(row.face, *this, changed);
        OviAPI::connect<&OviAPI::WSpinBox::onValueChanged>(row.size, *this, changed);
        const auto seen = [this, kind](OviAPI::Object*) -> OviAPI::SlotResult {
            showSample(kind);
            return 0;
        };
        OviAPI::connect<&OviAPI::VisualObject::onGetFocus>(row.face, *this, seen);
        OviAPI::connect<&OviAPI::VisualObject::onGetFocus>(row.size, *this, seen);
    }
    add(m_languageLabel, m_appearance);
    add(m_language, m_appearance);
    m_languageLabel.setBuddy(&m_language);
    OviAPI::connect<&OviAPI::WLineList::onSelect>(m_language, *this, &SettingsDialog::onLanguage);
    m_sample.setStyle(OviAPI::WStatic::WordWrap);
    add(m_sampleLabel, m_appearance);
    add(m_sample, m_appearance);
}

void SettingsDialog::createAnswers()
{
    m_tabs.addTab(L"", &m_answersPage);
    m_answersPage.create();
    for (OviAPI::WTypicalControl* control : std::initializer_list<OviAPI::WTypicalControl*>{
             &m_answersLabel, &m_answers, &m_askAgain, &m_askAll})
        add(*control, m_answersPage);
    m_answersLabel.setBuddy(&m_answers);
    OviAPI::connect<&OviAPI::WButton::onPush>(m_askAgain, *this, &SettingsDialog::onAskAgainPush);
    OviAPI::connect<&OviAPI::WButton::onPush>(m_askAll, *this, &SettingsDialog::onAskAllPush);
}

void SettingsDialog::loadTexts()
{
    setTitle(textOf(TextSettingsTitle).c_str());
    m_tabs.setCaption(0, textOf(TextSettingsAppearance).c_str());
    m_tabs.setCaption(1, textOf(TextSettingsAnswers).c_str());
    for (size_t kind = 0; kind < m_rows.size(); ++kind) {
        m_rows[kind].label.setText(textOf(kindTexts[kind]).c_str());
        m_rows[kind].size.setSuffix(textOf(TextSettingsPoints).c_str());
        m_rows[kind].size.setAccessibleName(
            textOf(TextSettingsSizeName, nameOf(kindTexts[kind])).c_str());
    }
    m_languageLabel.setText(textOf(TextSettingsLanguage).c_str());
    m_sampleLabel.setText(textOf(TextSettingsSampleLabel).c_str());
    m_sample.setText(textOf(TextSettingsSample).c_str());
    m_answersLabel.setText(textOf(TextAnswersPrompt).c_str());
    m_askAgain.setText(textOf(TextAnswersAsk).c_str());
    m_askAll.setText(textOf(TextAnswersAskAll).c_str());
    m_defaults.setText(textOf(TextSettingsDefaults).c_str());
    m_ok.setText(textOf(TextDialogOk).c_str());
    m_cancel.setText(textOf(TextDialogCancel).c_str());
    m_apply.setText(textOf(TextSettingsApply).c_str());
    fill();
}

// --- placing them

int SettingsDialog::layout(int width)
{
    constexpr int tabFrame = 4; // px that the control takes around its pages, both sides
    const int page = std::max(layoutAppearance(width - tabFrame), layoutAnswers(width - tabFrame));
    const int tabs = page + textHeight() + 20;
    m_tabs.move(Margin, Margin, width, tabs);
    return layoutButtons({&m_defaults, &m_ok, &m_cancel, &m_apply}, width, Margin + tabs + Gap);
}

int SettingsDialog::layoutAppearance(int width)
{
    int labels = OviAPI::GetTextSize(font(), m_languageLabel.text()).width;
    for (const FontRow& row : m_rows)
        labels = std::max(labels, OviAPI::GetTextSize(font(), row.label.text()).width);
    labels = std::min(labels, width / 2);
    const int sizeWidth = scaled(usualSizeWidth);
    const int left = inner + labels + Gap;
    const int face =
        std::max(0, std::min(scaled(usualFaceWidth), width - left - sizeWidth - Gap - inner));
    const int down = (fieldHeight() - textHeight()) / 2;
    int top = inner;
    for (FontRow& row : m_rows) {
        row.label.move(inner, top + down, labels, textHeight() + 2);
        row.face.move(left, top, face, fieldHeight());
        row.size.move(left + face + Gap, top, sizeWidth, fieldHeight());
        top += fieldHeight() + rowGap;
    }
    m_languageLabel.move(inner, top + down, labels, textHeight() + 2);
    m_language.move(left, top, face, fieldHeight());
    top += fieldHeight() + Gap;
    m_sampleLabel.move(inner, top, labels, textHeight() + 2);
    const int room = sampleLines * textHeight();
    m_sample.move(left, top, width - left - inner, room);
    showSample(m_sampleKind);
    return top + room + inner;
}

int SettingsDialog::layoutAnswers(int width)
{
    const int inside = width - 2 * inner;
    int top = inner;
    const int label = wrappedHeight(m_answersLabel.text(), inside);
    m_answersLabel.move(inner, top, inside, label);
    top += label + rowGap;
    const int list = answerLines * (textHeight() + 2) + 4;
    m_answers.move(inner, top, inside, list);
    top += list + Gap;
    // Buttons stand between the margins of the dialog, which a page does not have.
    return layoutButtons({&m_askAgain, &m_askAll}, width - Margin - inner, top) + inner;
}

// --- settings and controls

void SettingsDialog::fill()
{
    m_filling = true;
    for (size_t kind = 0; kind < m_rows.size(); ++kind) {
        FontRow& row = m_rows[kind];
        row.face.setCurrentLine(lineOfFace(row.face, m_now.fonts[kind].name()));
        row.size.setValue(m_now.fonts[kind].size());
    }
    if (m_language.lineCount() == 0) {
        m_language.insertLine(textOf(TextSettingsEnglish).c_str());
        m_language.insertLine(textOf(TextSettingsRussian).c_str());
    }
    m_language.setCurrentLine(m_now.language == TypicalOptions::Koi8Language ? 1 : 0);
    fillAnswers();
    m_apply.enable(m_now != m_before);
    m_filling = false;
}

void SettingsDialog::fillAnswers()
{
    const int line = std::max(0, m_answers.currentLine());
    m_answers.clear();
    m_lines.clear();
    for (const Answer& answer : answers) {
        const int32_t value = (m_now.*answer.value).Value;
        if (value == TypicalConfirm::Ask)
            continue;
        m_answers.insertLine(textOf(value == TypicalConfirm::Yes ? answer.yes : answer.no).c_str());
        m_lines.push_back(answer.value);
    }
    const bool any = !m_lines.empty();
    if (any)
        m_answers.setCurrentLine(std::min(line, m_answers.lineCount() - 1));
    else
        m_answers.insertLine(textOf(TextAnswersNone).c_str());
    m_answers.enable(any);
    m_askAgain.enable(any);
    m_askAll.enable(any);
}

void SettingsDialog::take(const Settings& now)
{
    if (now == m_now)
        return;
    m_now = now;
    m_now.storeIn(m_options);
    fill();
    m_changed();
    showSample(m_sampleKind);
}

// The sample has a font of its own, which a change of the fonts of the form takes away.
void SettingsDialog::showSample(size_t kind)
{
    m_sampleKind = kind;
    m_sample.setFont(m_now.fonts[kind]);
    m_sample.repaint();
}

OviAPI::SlotResult SettingsDialog::onFontChange(OviAPI::Object*, size_t kind)
{
    if (m_filling)
        return 0;
    Settings now = m_now;
    const OviAPI::Font& old = now.fonts[kind];
    const FontRow& row = m_rows[kind];
    now.fonts[kind] = {row.face.text(), static_cast<int>(row.size.value()),
                       old.bold(),      old.italic(),
                       old.underline(), old.strikeout()};
    m_sampleKind = kind;
    take(now);
    return 0;
}

OviAPI::SlotResult SettingsDialog::onLanguage(OviAPI::Object*)
{
    Settings now = m_now;
    now.language = m_language.currentLine() == 1 ? TypicalOptions::Koi8Language
                                                 : TypicalOptions::DefaultLanguage;
    take(now);
    return 1;
}

OviAPI::SlotResult SettingsDialog::onAskAgainPush(OviAPI::Object*)
{
    const int line = m_answers.currentLine();
    if (line < 0 || static_cast<size_t>(line) >= m_lines.size())
        return 1;
    Settings now = m_now;
    (now.*m_lines[static_cast<size_t>(line)]).Value = TypicalConfirm::Ask;
    take(now);
    return 1;
}

OviAPI::SlotResult SettingsDialog::onAskAllPush(OviAPI::Object*)
{
    Settings now = m_now;
    for (const Answer& answer : answers)
        (now.*answer.value).Value = TypicalConfirm::Ask;
    take(now);
    return 1;
}

OviAPI::SlotResult SettingsDialog::onDefaultsPush(OviAPI::Object*)
{
    take(Settings::defaults(m_options));
    return 1;
}

OviAPI::SlotResult SettingsDialog::onOkPush(OviAPI::Object*)
{
    m_before = m_now;
    closeModal(1);
    return 1;
}

OviAPI::SlotResult SettingsDialog::onCancelPush(OviAPI::Object*)
{
    close();
    return 1;
}

OviAPI::SlotResult SettingsDialog::onApplyPush(OviAPI::Object*)
{
    m_before = m_now;
    m_apply.enable(false);
    m_ok.setFocus();
    return 1;
}
