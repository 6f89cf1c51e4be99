// What the buttons of the value dialog do.
#include "explorer/valuedialog.h"

#include <algorithm>
#include <chrono>
#include <system_error>

#include <oviapi/filedialog.h>
#include <oviapi/msgbox.h>
#include <oviapi/text.h>

#include "explorer/textlookup.h"

namespace {

constexpr std::chrono::milliseconds workTime(25); // before the window lives on

void showBox(const std::wstring& text)
{
    OviAPI::MsgBox::show(textOf(TextErrorTitle).c_str(), text.c_str(), OviAPI::MsgBox::Ok);
}

std::wstring folderOf(const std::wstring& path)
{
    return path.substr(0, path.rfind(L'/'));
}

} // namespace

bool ValueDialog::tried(const std::function<void()>& act)
{
    std::wstring fault;
    try {
        act();
        return true;
    } catch (const DorCPP::DorX& x) {
        fault = messageOf(x);
    } catch (const std::system_error& error) {
        fault = OviAPI::localeToWide(error.what());
    } catch (const ValueFault& reason) {
        fault = textOf(reason.reason());
    }
    showBox(textOf(TextValueFailed, fault));
    return false;
}

// --- work that takes its time

void ValueDialog::begin(std::function<std::unique_ptr<ValueWork>()> make, Done done)
{
    if (isWorking() || !tried([&] { m_work = make(); }))
        return;
    m_done = std::move(done);
    updateControls();
    m_stop.setFocus();
    m_timer.start();
}

OviAPI::SlotResult ValueDialog::work(OviAPI::Object*)
{
    if (!m_work)
        return 1;
    const auto end = std::chrono::steady_clock::now() + workTime;
    auto state = ValueWork::State::Going;
    m_task.setText(textOf(m_work->text()).c_str());
    m_bar.setPercent(m_work->percent());
    m_timer.stop(); // a box shown meanwhile has a loop of its own
    const bool well = tried([&] {
        while (state == ValueWork::State::Going && std::chrono::steady_clock::now() < end)
            state = m_work->step();
    });
    if (well && state != ValueWork::State::Done) {
        m_timer.start();
        return 1;
    }
    const std::unique_ptr<ValueWork> finished = std::move(m_work);
    const Done done = std::move(m_done);
    stopWork();
    if (well)
        done(*finished);
    return 1;
}

void ValueDialog::stopWork()
{
    m_timer.stop();
    const bool hadFocus = m_stop.hasFocus();
    m_work.reset();
    updateControls();
    if (hadFocus)
        m_forms.setFocus();
}

// --- files

void ValueDialog::save()
{
    OviAPI::ExtFileDialog dialog(OviAPI::ExtFileDialog::Save);
    dialog.setTitle(textOf(TextValueSaveTitle).c_str());
    dialog.setFilters(textOf(TextValueFilters).c_str());
    dialog.setFolder(m_options.LastSaveDirectory.c_str());
    if (!dialog.execModal(this))
        return;
    const std::wstring path = dialog.path();
    m_options.setLastSaveDirectory(folderOf(path).c_str());
    begin([this, path] { return std::make_unique<ValueSaver>(m_value, path); },
          [this, path](ValueWork&) { notify([path] { return textOf(TextValueSaved, path); }); });
}

void ValueDialog::load()
{
    OviAPI::ExtFileDialog dialog;
    dialog.setTitle(textOf(TextValueLoadTitle).c_str());
    dialog.setFilters(textOf(TextValueFilters).c_str());
    dialog.setFolder(m_options.lastUsedDirectory());
    if (!dialog.execModal(this))
        return;
    const std::wstring path = dialog.path();
    begin([this, path] { return std::make_unique<ValueLoader>(m_value, path); },
          [this](ValueWork&) { valueStored(); });
}

// --- storing

void ValueDialog::setNull()
{
    using OviAPI::MsgBox;
    const int answer =
        MsgBox::showEx(textOf(TextValueQuestionTitle).c_str(),
                       textOf(TextValueNullQuestion).c_str(), MsgBox::Yes | MsgBox::No, MsgBox::No);
    if (answer == MsgBox::Yes && tried([this] { m_value.setNull(); }))
        valueStored();
}

// False when it has not been stored, which a box has told.
bool ValueDialog::storeText()
{
    TextStyle style = m_style;
    if (m_value.isText())
        style.encoding = TextEncoding::Utf8;
    const std::optional<std::string> bytes = encodedText(m_editor.text(), style);
    if (!bytes) {
        showBox(textOf(TextValueNoCharacter, nameOf(style.encoding)));
        return false;
    }
    if (static_cast<int64_t>(bytes->size()) > LongestText) {
        showBox(textOf(TextValueLongText));
        return false;
    }
    if (!tried([&] { m_value.write(*bytes); }))
        return false;
    textStored(*bytes);
    return true;
}

// The editor keeps its place, unless the database has made something else of the text.
void ValueDialog::textStored(std::string bytes)
{
    m_changed = true;
    bool same = false;
    const bool read = tried([&] {
        m_reader->reset();
        m_isNull = m_value.isNull();
        const std::string start = m_reader->bytes(0, static_cast<size_t>(FirstText));
        same = m_reader->size() == static_cast<int64_t>(bytes.size()) && bytes.starts_with(start);
    });
    if (!read)
        return;
    if (!same)
        return valueStored();
    m_start = std::move(bytes);
    m_hex.setReader(m_reader.get());
    m_editor.setModified(false);
    updateInfo();
    updateControls();
}

// The form stays, and so does the encoding of a text.
void ValueDialog::valueStored()
{
    m_changed = true;
    const ValueForm form = m_form;
    const TextEncoding encoding = m_style.encoding;
    if (!readStart())
        return;
    m_form = form;
    if (form == ValueForm::Text)
        m_style = styleOf(m_start, encoding);
    showValue();
}

// --- the rest of a long text

void ValueDialog::readAll()
{
    begin([this] { return std::make_unique<ValueCollector>(m_value); },
          [this](ValueWork& work) {
              m_start = std::move(static_cast<ValueCollector&>(work).bytes());
              showText();
              updateControls();
          });
}

// --- places in the hexadecimal view

void ValueDialog::goToOffset()
{
    const std::optional<int64_t> offset = offsetIn(m_offset.text());
    if (offset && m_hex.goTo(*offset)) {
        notify(nullptr);
        m_hex.setFocus();
        return;
    }
    notify([last = std::max<int64_t>(0, m_reader->size() - 1)] {
        return textOf(TextValueNotOffset, groupedNumber(static_cast<long>(last)));
    });
    m_offset.select(0, -1);
    m_offset.setFocus();
}

void ValueDialog::findNext()
{
    const std::optional<std::string> what = soughtBytes(m_find.text());
    if (!what) {
        notify([] { return textOf(TextValueNotSought); });
        m_find.setFocus();
        return;
    }
    notify(nullptr);
    const int64_t from = m_hex.offset() == m_lastFound ? m_lastFound + 1 : m_hex.offset();
    begin([this, what, from] { return std::make_unique<ValueFinder>(*m_reader, *what, from); },
          [this](ValueWork& work) {
              m_lastFound = static_cast<ValueFinder&>(work).found();
              if (m_lastFound < 0)
                  return notify([] { return textOf(TextValueNotFound); });
              m_hex.goTo(m_lastFound);
              m_hex.setFocus();
          });
}
