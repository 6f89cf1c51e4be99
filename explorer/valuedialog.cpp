#include "explorer/valuedialog.h"

#include <algorithm>

#include <oviapi/msgbox.h>
#include <oviapi/painter.h>

#include "explorer/textlookup.h"

namespace {

constexpr int workInterval = 5; // ms
constexpr int usualView = 360;  // px
constexpr int smallestView = 120;
constexpr int usualWidth = 760;
constexpr int smallestFind = 80;
constexpr int choiceArrow = 44; // px of a drop-down list beside its text
constexpr int smallestButton = 84;
constexpr int fieldDigits = 16; // that a field for an offset has room for

constexpr ValueForm forms[] = {ValueForm::Text, ValueForm::Image, ValueForm::Hex};
constexpr TextId formTexts[] = {TextValueFormText, TextValueFormImage, TextValueFormHex};

int widestText(const OviAPI::Font& font, const OviAPI::WLineList& list)
{
    int widest = 0;
    for (int line = 0; line < list.lineCount(); ++line)
        widest = std::max(widest, OviAPI::GetTextSize(font, list.lineText(line)).width);
    return widest;
}

std::wstring sizeText(int64_t bytes)
{
    return groupedNumber(static_cast<long>(bytes));
}

// A text is shown up to its end, whatever is in it.
std::wstring withoutZeros(std::wstring text)
{
    std::replace(text.begin(), text.end(), L'\0', L'\u2400');
    return text;
}

} // namespace

ValueDialog::ValueDialog(WExtForm& above, ValueStore& value, std::wstring name,
                         ExplorerOptions& options)
    : ExplorerDialog(above)
    , m_value(value)
    , m_name(std::move(name))
    , m_options(options)
    , m_timer(workInterval)
    , m_viewHeight(options.ValueView.height)
{
    setStyle(style() | SizingBorder | MaximizeButton);
    m_width = options.ValueView.width;
    OviAPI::connect<&OviAPI::WTimer::onTimer>(m_timer, *this, &ValueDialog::work);
}

bool ValueDialog::create()
{
    if (isCreated())
        return true;
    if (!readStart() || !ExplorerDialog::create())
        return false;
    m_made = true;
    showValue();
    return true;
}

bool ValueDialog::onClose()
{
    if (isWorking()) {
        stopWork();
        return false;
    }
    if (isEdited()) {
        using OviAPI::MsgBox;
        const int answer = MsgBox::show(textOf(TextValueQuestionTitle).c_str(),
                                        textOf(TextValueStoreQuestion).c_str(),
                                        MsgBox::Yes | MsgBox::No | MsgBox::Cancel);
        if (answer == MsgBox::Cancel || (answer == MsgBox::Yes && !storeText()))
            return false;
    }
    m_options.ValueView = {m_width, m_viewHeight};
    return ExplorerDialog::onClose();
}

// --- making the controls, in the order of the Tab key

void ValueDialog::createControls()
{
    m_notice.setStyle(OviAPI::WStatic::WordWrap);
    for (OviAPI::WTypicalControl* control : std::initializer_list<OviAPI::WTypicalControl*>{
             &m_info, &m_formLabel, &m_forms, &m_encodingLabel, &m_encodings, &m_offsetLabel,
             &m_offset, &m_go, &m_findLabel, &m_find, &m_findNext})
        add(*control);
    for (OviAPI::WVisualObject* view :
         std::initializer_list<OviAPI::WVisualObject*>{&m_editor, &m_image, &m_hex}) {
        view->setParent(&content());
        view->create();
    }
    for (OviAPI::WTypicalControl* control : std::initializer_list<OviAPI::WTypicalControl*>{
             &m_notice, &m_showAll, &m_task, &m_bar, &m_stop, &m_save, &m_load, &m_null, &m_store,
             &m_close})
        add(*control);
    m_editor.setPlainText(true);
    m_editor.setFont(m_options.FontEdits);
    m_hex.setFont(m_options.FontGrid);
    for (size_t i = 0; i < std::size(forms); ++i)
        m_forms.insertLine(L"");
    for (const TextEncoding encoding : allEncodings)
        m_encodings.insertLine(nameOf(encoding));
    m_formLabel.setBuddy(&m_forms);
    m_encodingLabel.setBuddy(&m_encodings);
    m_offsetLabel.setBuddy(&m_offset);
    m_findLabel.setBuddy(&m_find);
    OviAPI::connect<&OviAPI::WLineList::onSelect>(m_forms, *this, &ValueDialog::onFormChosen);
    OviAPI::connect<&OviAPI::WLineList::onSelect>(m_encodings, *this,
                                                  &ValueDialog::onEncodingChosen);
    OviAPI::connect<&OviAPI::CSrcEdit::onModified>(m_editor, *this, &ValueDialog::onModified);
    OviAPI::connect<&OviAPI::VisualObject::onKeyDown>(m_offset, *this, &ValueDialog::onOffsetKey);
    OviAPI::connect<&OviAPI::VisualObject::onKeyDown>(m_find, *this, &ValueDialog::onFindKey);
    onPush(m_go, &ValueDialog::goToOffset);
    onPush(m_findNext, &ValueDialog::findNext);
    onPush(m_showAll, &ValueDialog::readAll);
    onPush(m_stop, &ValueDialog::stopWork);
    onPush(m_save, &ValueDialog::save);
    onPush(m_load, &ValueDialog::load);
    onPush(m_null, &ValueDialog::setNull);
    onPush(m_store, &ValueDialog::store);
    OviAPI::connect<&OviAPI::WButton::onPush>(m_close, *this,
                                              [this](OviAPI::Object*) -> OviAPI::SlotResult {
                                                  close();
                                                  return 1;
                                              });
}

void ValueDialog::onPush(OviAPI::WButton& button, void (ValueDialog::*act)())
{
    OviAPI::connect<&OviAPI::WButton::onPush>(button, *this,
                                              [this, act](OviAPI::Object*) -> OviAPI::SlotResult {
                                                  (this->*act)();
                                                  return 1;
                                              });
}

void ValueDialog::loadTexts()
{
    setTitle(textOf(TextValueTitle, m_name).c_str());
    m_formLabel.setText(textOf(TextValueForm).c_str());
    for (size_t i = 0; i < std::size(forms); ++i)
        m_forms.setLineText(static_cast<int>(i), textOf(formTexts[i]).c_str());
    m_encodingLabel.setText(textOf(TextValueEncoding).c_str());
    m_offsetLabel.setText(textOf(TextValueOffset).c_str());
    m_go.setText(textOf(TextValueGo).c_str());
    m_findLabel.setText(textOf(TextValueFind).c_str());
    m_findNext.setText(textOf(TextValueFindNext).c_str());
    m_showAll.setText(textOf(TextValueShowAll).c_str());
    m_stop.setText(textOf(TextValueStop).c_str());
    m_save.setText(textOf(TextValueSave).c_str());
    m_load.setText(textOf(TextValueLoad).c_str());
    m_null.setText(textOf(TextValueNull).c_str());
    m_store.setText(textOf(TextValueStore).c_str());
    m_close.setText(textOf(TextValueClose).c_str());
    m_offset.setToolTip(textOf(TextValueOffsetHint).c_str());
    m_find.setToolTip(textOf(TextValueFindHint).c_str());
    m_editor.setAccessibleName(textOf(TextValueEditorName).c_str());
    m_image.setAccessibleName(textOf(TextValueImageName).c_str());
    m_hex.loadTexts();
    notify(m_words);
    updateInfo();
}

// --- placing them

int ValueDialog::contentWidth() const
{
    return std::max(m_width > 0 ? m_width : scaled(usualWidth), smallestWidth());
}

// What the longest row needs: that of the buttons, or that of the hexadecimal view.
int ValueDialog::smallestWidth() const
{
    const auto label = [this](const OviAPI::WStatic& text) {
        return OviAPI::GetTextSize(font(), text.text()).width + Gap;
    };
    const int choices = label(m_formLabel) + widestText(font(), m_forms) + choiceArrow + 3 * Gap +
                        label(m_offsetLabel) + fieldWidth() + Gap + buttonWidth(m_go) + 3 * Gap +
                        label(m_findLabel) + scaled(smallestFind) + Gap + buttonWidth(m_findNext);
    int buttons = 0;
    for (const OviAPI::WButton* button : {&m_save, &m_load, &m_null, &m_store, &m_close})
        buttons += std::max(scaled(smallestButton), buttonWidth(*button)) + Gap;
    return std::max(choices, buttons);
}

int ValueDialog::fieldWidth() const
{
    return OviAPI::GetTextSize(font(), std::wstring(fieldDigits, L'0')).width;
}

int ValueDialog::layout(int width)
{
    if (m_viewHeight == 0)
        m_viewHeight = scaled(usualView);
    int top = Margin;
    m_info.move(Margin, top, width, textHeight() + 2);
    top += textHeight() + 2 + Gap;
    top = layoutChoices(width, top) + Gap;
    for (OviAPI::WVisualObject* view :
         std::initializer_list<OviAPI::WVisualObject*>{&m_editor, &m_image, &m_hex})
        view->move(Margin, top, width, m_viewHeight);
    top = layoutBelow(width, top + m_viewHeight + Gap) + Gap;
    return layoutButtons({&m_save, &m_load, &m_null, &m_store, &m_close}, width, top);
}

// The form, and what belongs to it behind.
int ValueDialog::layoutChoices(int width, int top)
{
    const int height = fieldHeight();
    int left = Margin;
    const auto place = [&](OviAPI::WVisualObject& control, int wide) {
        control.move(left, top, wide, height);
        left += wide + Gap;
    };
    const auto label = [&](OviAPI::WStatic& text) {
        const int wide = OviAPI::GetTextSize(font(), text.text()).width;
        text.move(left, top + (height - textHeight()) / 2, wide, textHeight() + 2);
        left += wide + Gap;
    };
    const auto button = [&](OviAPI::WButton& push) { place(push, buttonWidth(push)); };
    label(m_formLabel);
    place(m_forms, widestText(font(), m_forms) + choiceArrow);
    left += 2 * Gap;
    const int behind = left;
    label(m_encodingLabel);
    place(m_encodings, widestText(font(), m_encodings) + choiceArrow);
    left = behind;
    label(m_offsetLabel);
    place(m_offset, fieldWidth());
    button(m_go);
    left += 2 * Gap;
    label(m_findLabel);
    const int rest = Margin + width - left - buttonWidth(m_findNext) - Gap;
    place(m_find, std::max(rest, scaled(smallestFind)));
    button(m_findNext);
    return top + height;
}

// What there is to say, or the work that goes on, in the same place.
int ValueDialog::layoutBelow(int width, int top)
{
    const int height = std::max(fieldHeight(), 2 * textHeight() + 2);
    const int all = buttonWidth(m_showAll);
    m_showAll.move(Margin + width - all, top, all, fieldHeight());
    m_notice.move(Margin, top, offersAll() ? width - all - Gap : width, height);
    const int label = width / 3;
    const int stop = buttonWidth(m_stop);
    const int line = top + (fieldHeight() - textHeight()) / 2;
    m_task.move(Margin, line, label, textHeight() + 2);
    m_bar.move(Margin + label + Gap, line, std::max(0, width - label - stop - 2 * Gap),
               textHeight());
    m_stop.move(Margin + width - stop, top, stop, fieldHeight());
    return top + height;
}

bool ValueDialog::onSize()
{
    ExplorerDialog::onSize();
    if (m_made)
        fit();
    return false;
}

// Gives the view what the window has room for.
void ValueDialog::fit()
{
    const OviAPI::Size size = clientSize();
    m_width = std::max(smallestWidth(), size.width - 2 * Margin);
    const int bottom = layout(m_width) + Margin;
    m_viewHeight = std::max(scaled(smallestView), m_viewHeight + size.height - bottom);
    content().setContentSize(m_width + 2 * Margin, layout(m_width) + Margin);
}

// --- what is shown

// False when it cannot be read.
bool ValueDialog::readStart()
{
    return tried([this] {
        if (m_reader)
            m_reader->reset();
        else
            m_reader = std::make_unique<ValueReader>(m_value);
        m_isNull = m_value.isNull();
        m_start = m_reader->bytes(0, static_cast<size_t>(FirstText));
        const ValueStart start{m_start, static_cast<int64_t>(m_start.size()) == m_reader->size()};
        m_form = guessForm(start, m_value.isText());
        m_style = styleOf(m_start, guessEncoding(start));
    });
}

void ValueDialog::showValue()
{
    m_forms.setCurrentLine(static_cast<int>(m_form));
    m_encodings.setCurrentLine(static_cast<int>(m_style.encoding));
    updateInfo();
    m_hex.setReader(m_reader.get());
    m_image.setPicture({});
    m_editor.setModified(false);
    showForm();
}

void ValueDialog::showForm()
{
    notify(nullptr);
    const bool text = m_form == ValueForm::Text;
    const bool hex = m_form == ValueForm::Hex;
    m_editor.show(text);
    m_image.show(m_form == ValueForm::Image);
    m_hex.show(hex);
    for (OviAPI::WVisualObject* control :
         std::initializer_list<OviAPI::WVisualObject*>{&m_encodingLabel, &m_encodings})
        control->show(text);
    for (OviAPI::WVisualObject* control : std::initializer_list<OviAPI::WVisualObject*>{
             &m_offsetLabel, &m_offset, &m_go, &m_findLabel, &m_find, &m_findNext})
        control->show(hex);
    if (text && !isEdited())
        showText();
    else if (m_form == ValueForm::Image)
        showImage();
    updateControls();
}

void ValueDialog::showText()
{
    const auto read = static_cast<int64_t>(m_start.size());
    const bool whole = read == m_reader->size();
    m_style = styleOf(m_start, m_style.encoding);
    std::string_view bytes = m_start;
    if (!whole)
        bytes = bytes.substr(0, wholeCharacters(bytes, m_style.encoding));
    const std::wstring text = decodedText(bytes, m_style);
    m_editor.setText(withoutZeros(text).c_str());
    m_editable = false;
    if (whole) {
        const Words fault = editFault(text, bytes);
        m_editable = !fault;
        notify(fault);
    } else if (m_reader->size() <= LongestText) {
        notify([shown = sizeText(read)] { return textOf(TextValueFirstPart, shown); });
    } else {
        notify([shown = sizeText(read)] {
            return textOf(TextValueFirstPart, shown) + L" " + textOf(TextValueLongText);
        });
    }
    m_editor.setReadOnly(!m_editable);
}

// Why the text must not be stored again as it stands in the editor; null when it may.
ValueDialog::Words ValueDialog::editFault(const std::wstring& text, std::string_view bytes) const
{
    const std::wstring reason = m_value.readOnlyReason();
    if (!reason.empty())
        return [this] { return m_value.readOnlyReason(); };
    if (m_value.isText() && m_style.encoding != TextEncoding::Utf8)
        return [] { return textOf(TextValueOtherEncoding); };
    if (m_editor.text() != text || encodedText(text, m_style) != bytes)
        return [] { return textOf(TextValueNotExact); };
    return nullptr;
}

void ValueDialog::showImage()
{
    if (m_reader->size() > LongestImage) {
        notify([] { return textOf(TextValueLongImage, sizeText(LongestImage)); });
        return;
    }
    const auto show = [this](const std::string& bytes) {
        m_image.setPicture(OviAPI::Picture::fromFileBytes(bytes));
        if (m_image.picture().isNull())
            return notify([] { return textOf(TextValueNoImage); });
        const OviAPI::Size size = m_image.picture().size();
        const std::wstring pixels =
            std::to_wstring(size.width) + L" \u00D7 " + std::to_wstring(size.height);
        notify([pixels] { return textOf(TextValuePixels, pixels); });
    };
    if (static_cast<int64_t>(m_start.size()) == m_reader->size())
        return show(m_start);
    begin([this] { return std::make_unique<ValueCollector>(m_value); },
          [show](ValueWork& work) { show(static_cast<ValueCollector&>(work).bytes()); });
}

void ValueDialog::notify(Words words)
{
    m_words = std::move(words);
    m_notice.setText(m_words ? m_words().c_str() : L"");
    m_notice.show(m_words && !isWorking());
}

void ValueDialog::updateInfo()
{
    std::wstring text = m_value.typeName();
    if (!text.empty())
        text += L". ";
    text += m_isNull ? textOf(TextStatusNull) : textOf(TextValueSize, sizeText(m_reader->size()));
    m_info.setText(text.c_str());
}

bool ValueDialog::offersAll() const
{
    return !isWorking() && m_form == ValueForm::Text && m_reader->size() <= LongestText &&
           static_cast<int64_t>(m_start.size()) < m_reader->size();
}

void ValueDialog::updateControls()
{
    const bool working = isWorking();
    const bool writable = !working && m_value.readOnlyReason().empty();
    for (OviAPI::WVisualObject* control : std::initializer_list<OviAPI::WVisualObject*>{
             &m_forms, &m_encodings, &m_offset, &m_go, &m_find, &m_findNext, &m_editor, &m_hex,
             &m_close})
        control->enable(!working);
    m_save.enable(!working && !m_isNull);
    m_load.enable(writable);
    m_null.enable(writable && !m_isNull);
    m_store.enable(!working && m_form == ValueForm::Text && m_editable && (isEdited() || m_isNull));
    m_showAll.show(offersAll());
    m_notice.show(m_words && !working);
    for (OviAPI::WVisualObject* control :
         std::initializer_list<OviAPI::WVisualObject*>{&m_task, &m_bar, &m_stop})
        control->show(working);
    if (m_made)
        fit();
}

// --- what the user chooses

OviAPI::SlotResult ValueDialog::onFormChosen(OviAPI::Object*)
{
    m_form = forms[static_cast<size_t>(std::clamp(m_forms.currentLine(), 0, 2))];
    showForm();
    return 0;
}

// A text that has been changed is kept, and stored in the encoding that is chosen.
OviAPI::SlotResult ValueDialog::onEncodingChosen(OviAPI::Object*)
{
    const auto line = static_cast<size_t>(std::max(0, m_encodings.currentLine()));
    m_style.encoding = allEncodings[line];
    if (!isEdited())
        showForm();
    return 0;
}

OviAPI::SlotResult ValueDialog::onModified(OviAPI::Object*, bool)
{
    if (m_made)
        updateControls();
    return 0;
}

OviAPI::SlotResult ValueDialog::onOffsetKey(OviAPI::Object*, OviAPI::VirtualKey key)
{
    if (key.getKeyboardKey() != OviAPI::KeyEnter)
        return 0;
    goToOffset();
    return 1;
}

OviAPI::SlotResult ValueDialog::onFindKey(OviAPI::Object*, OviAPI::VirtualKey key)
{
    if (key.getKeyboardKey() != OviAPI::KeyEnter)
        return 0;
    findNext();
    return 1;
}
