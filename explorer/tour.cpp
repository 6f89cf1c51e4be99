#include "explorer/tour.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include <dorcpp/connect.h>
#include <oviapi/application.h>
#include <oviapi/capture.h>
#include <oviapi/inputdriver.h>
#include <oviapi/text.h>
#include <unistd.h>

#include "explorer/builddialog.h"

using OviAPI::InputDriver;
using OviAPI::VirtualKey;

namespace {

constexpr int tickTime = 20;      // ms
constexpr int settleTicks = 4;    // that every step gets
constexpr int longestWait = 3000; // ticks: a minute, for the building of the sample

constexpr const wchar_t* sqlText = L"-- The largest packages of each section\n"
                                   L"SELECT s.name AS section, count(*) AS packages,\n"
                                   L"       max(p.size_kib) AS largest\n"
                                   L"FROM package p JOIN section s ON s.id = p.section_id\n"
                                   L"GROUP BY s.name\n"
                                   L"ORDER BY largest DESC;\n"
                                   L"\n"
                                   L"SELECT nme FROM package;\n";

constexpr VirtualKey controlKey(int key, wchar_t character = 0)
{
    return {key, OviAPI::ModifierControl, character};
}

constexpr int letter(char c)
{
    return OviAPI::KeyA + (c - 'A');
}

std::vector<VirtualKey> times(size_t count, VirtualKey key)
{
    return std::vector<VirtualKey>(count, key);
}

} // namespace

Tour::Tour(MainForm& form, std::string folder, const std::string& database)
    : m_form(form)
    , m_folder(std::move(folder))
    , m_timer(tickTime)
{
    m_badFile = std::filesystem::absolute(m_folder) / "not-a-database.txt";
    OviAPI::connect<&OviAPI::WTimer::onTimer>(m_timer, *this, &Tour::tick);
    plan(database);
}

Tour::~Tour()
{
    std::remove(m_badFile.c_str());
}

std::string Tour::folderFault(const std::string& folder)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error)
        return "the folder " + folder + " cannot be made: " + error.message();
    if (access(folder.c_str(), W_OK | X_OK) != 0)
        return "no pictures can be written to " + folder + ": " + std::strerror(errno);
    if (!std::filesystem::is_directory(folder))
        return folder + " is not a folder";
    return {};
}

void Tour::start()
{
    std::ofstream(m_badFile) << "This is a text, not a database.\n";
    m_timer.start();
}

void Tour::plan(const std::string& database)
{
    const VirtualKey down(OviAPI::KeyDown);
    const VirtualKey enter(OviAPI::KeyEnter);
    const VirtualKey escape(OviAPI::KeyEscape);
    const VirtualKey shiftUp(OviAPI::KeyUp, OviAPI::ModifierShift);
    const VirtualKey shiftLeft(OviAPI::KeyLeft, OviAPI::ModifierShift);
    const VirtualKey ctrlEnter(OviAPI::KeyEnter, OviAPI::ModifierControl);
    const VirtualKey f6(OviAPI::KeyF1 + 5);

    if (database.empty()) {
        keys("database", {VirtualKey(letter('F'), OviAPI::ModifierAlt, L'f'),
                          VirtualKey(letter('S'), OviAPI::ModifierNone, L's')});
    } else {
        keys("", {controlKey(letter('O'))});
        step("database", [name = DorCPP::isServerName(database)
                                     ? database
                                     : std::filesystem::absolute(database).string()] {
            InputDriver::type(OviAPI::localeToWide(name));
            InputDriver::key(OviAPI::KeyEnter);
        });
    }
    chooseTable("table", L"package");
    keys("scrolled", {f6, f6, VirtualKey(OviAPI::KeyPageDown), VirtualKey(OviAPI::KeyPageDown)});
    keys("end", {controlKey(OviAPI::KeyEnd)});
    keys("selection", [&] {
        auto all = times(6, shiftUp);
        const auto left = times(2, shiftLeft);
        all.insert(all.end(), left.begin(), left.end());
        return all;
    }());
    step("splitter", [this] { InputDriver::drag(m_form.splitter(), {3, 100}, {63, 110}); });
    chooseTable("null-and-numbers", L"measurement");
    chooseTable("", L"section");
    keys("details", {controlKey(letter('D'))});
    step("editing", [this] {
        m_form.pane().view().setFocus();
        m_form.pane().view().SetFocusCell(2, 3);
        InputDriver::type(L"games and more");
    });
    keys("new-row", {escape, VirtualKey(OviAPI::KeyInsert)});
    keys("", {escape, {letter('D'), OviAPI::ModifierControl | OviAPI::ModifierShift, 0}});
    chooseTable("view", L"size_by_section");
    keys("", {controlKey(letter('E'))});
    step("sql", [this, ctrlEnter] {
        m_form.sqlPane().editor().setText(sqlText);
        m_form.sqlPane().editor().setCaret({2, 1});
        InputDriver::key(ctrlEnter);
    });
    step("sql-error", [this, ctrlEnter] {
        m_form.sqlPane().editor().setCaret({8, 1});
        InputDriver::key(ctrlEnter);
    });
    const VirtualKey monitor(OviAPI::KeyF1 + 7);
    keys("", {monitor, controlKey(letter('E')), ctrlEnter});
    keys("monitor", {monitor, monitor}); // what has been seen stays
    keys("", {monitor});
    keys("menu", {VirtualKey(letter('O'), OviAPI::ModifierAlt, L'o'), down});
    keys("", {escape, escape});
    planDialogs("");
    keys("russian", {controlKey(letter('L'))});
    keys("open-dialog", {controlKey(letter('O'))});
    step("bad-file", [this] {
        InputDriver::type(OviAPI::localeToWide(m_badFile));
        InputDriver::key(OviAPI::KeyEnter);
    });
    keys("", {enter});
    keys("go-to-row", {controlKey(letter('G'))});
    keys("", {escape});
    planDialogs("-russian");
    keys("", {controlKey(letter('L'))});
    keys("larger-text", times(4, controlKey(OviAPI::KeyPlus, L'+')));
    step("small-window", [this] { m_form.move(m_form.x(), m_form.y(), 640, 480); });
    keys("keys", {VirtualKey(OviAPI::KeyF1)});
    keys("", {enter, {OviAPI::Key0, OviAPI::ModifierControl | OviAPI::ModifierAlt, 0}});
    keys("closed", {controlKey(letter('W'))});
}

// The dialogs for values, connections and settings, by keys that are the same in both languages.
void Tour::planDialogs(const std::string& suffix)
{
    const VirtualKey tab(OviAPI::KeyTab);
    const VirtualKey shiftTab(OviAPI::KeyTab, OviAPI::ModifierShift);
    const VirtualKey space(OviAPI::KeySpace, OviAPI::ModifierNone, L' ');
    const VirtualKey escape(OviAPI::KeyEscape);

    const VirtualKey down(OviAPI::KeyDown);

    keys("value" + suffix, {VirtualKey(OviAPI::KeyF1 + 3)});
    keys("value-hexadecimal" + suffix, {down, down});
    keys("", {escape});
    keys("connect" + suffix, {{letter('O'), OviAPI::ModifierControl | OviAPI::ModifierShift, 0}});
    keys("connect-advanced" + suffix, {tab, tab, space});
    step("connect-failed" + suffix, [this, shiftTab] {
        for (int i = 0; i < 4; ++i) // from the first advanced setting over three buttons
            InputDriver::key(shiftTab);
        InputDriver::type(OviAPI::localeToWide(m_badFile));
        InputDriver::key(OviAPI::KeyEnter);
    });
    keys("", {escape});
    keys("settings" + suffix, {controlKey(OviAPI::KeyComma, L',')});
    keys("settings-answers" + suffix, {controlKey(OviAPI::KeyTab)});
    keys("", {escape});
}

void Tour::step(std::string picture, std::function<void()> act)
{
    m_steps.push_back({std::move(picture), std::move(act)});
}

void Tour::keys(std::string picture, std::vector<VirtualKey> keys)
{
    step(std::move(picture), [keys = std::move(keys)] {
        for (const VirtualKey key : keys)
            InputDriver::key(key);
    });
}

// With the mouse: a click on the line of the table.
void Tour::chooseTable(const std::string& picture, const std::wstring& name)
{
    step(picture, [this, name] {
        const DatabaseSession* session = m_form.session();
        if (!session)
            return;
        for (size_t i = 0; i < session->tables().size(); ++i) {
            OviAPI::Rect cell;
            const long row = static_cast<long>(i) + 1;
            if (session->tables()[i].name == name &&
                m_form.list().GetClientCellRect(TableList::Name, row, cell))
                InputDriver::click(m_form.list(), {cell.left + 5, (cell.top + cell.bottom) / 2});
        }
    });
}

OviAPI::SlotResult Tour::tick(OviAPI::Object*)
{
    if (m_next == m_steps.size()) {
        finish({});
        return 1;
    }
    const Step& now = m_steps[m_next];
    if (!m_acted) {
        m_acted = true;
        m_waited = 0;
        now.act();
        return 1;
    }
    ++m_waited;
    const bool building = dynamic_cast<BuildDialog*>(OviAPI::WForm::topModal()) != nullptr;
    if (m_waited > longestWait) {
        finish("the step " + now.picture + " did not come to an end");
    } else if (m_waited >= settleTicks && !building && !m_form.isBusy()) {
        if (!now.picture.empty() && !takePicture(now.picture))
            return 1;
        m_acted = false;
        ++m_next;
    }
    return 1;
}

bool Tour::takePicture(const std::string& name)
{
    char number[16];
    std::snprintf(number, sizeof number, "%02d-", ++m_pictures);
    const std::string path = m_folder + "/" + number + name + ".png";
    if (!OviAPI::captureWindow(m_form).savePng(OviAPI::localeToWide(path))) {
        finish("the picture " + path + " cannot be written");
        return false;
    }
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);
    return true;
}

void Tour::finish(const std::string& fault)
{
    m_timer.stop();
    if (!fault.empty())
        std::fprintf(stderr, "oviexplorer: %s\n", fault.c_str());
    OviAPI::Application::quit(fault.empty() ? 0 : 1);
    // Boxes and dialogs that are still open end first.
    for (int i = 0; i < 3; ++i)
        InputDriver::key(VirtualKey(OviAPI::KeyEscape));
}
