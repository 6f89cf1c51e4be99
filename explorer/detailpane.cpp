#include "explorer/detailpane.h"

#include <algorithm>

#include <oviapi/painter.h>

#include "explorer/textlookup.h"

using OviAPI::SlotResult;

namespace {

constexpr int restTime = 120; // ms
constexpr int margin = 6;     // px
constexpr int narrowestChoice = 120;
constexpr int choicePadding = 40; // px beside the longest caption

} // namespace

DetailPane::DetailPane(RowsPane& master, TypicalConfirm& deleteRow)
    : m_master(master)
    , m_rows(deleteRow)
    , m_rest(restTime)
{
    OviAPI::connect<&OviAPI::WComboBox::onSelChanged>(m_choice, *this, &DetailPane::onChoice);
    OviAPI::connect<&OviAPI::WTimer::onTimer>(m_rest, *this, &DetailPane::onRested);
    OviAPI::connect<&RowsPane::onRowBegun>(m_rows, *this, &DetailPane::onRowBegun);
}

DetailPane::~DetailPane() = default;

bool DetailPane::create()
{
    if (!WExtPanel::create())
        return false;
    m_label.setBuddy(&m_choice);
    for (OviAPI::WVisualObject* child :
         std::initializer_list<OviAPI::WVisualObject*>{&m_label, &m_choice, &m_rows}) {
        child->setParent(this);
        if (!child->create())
            return false;
    }
    loadTexts();
    layOut();
    return true;
}

void DetailPane::setMaster(const DorCPP::DorConnect& connection, const DatabaseTable& master,
                           const ForeignKeys& keys)
{
    std::vector<DetailTable> details = keys.detailsOf(master);
    const bool same =
        m_connection == &connection && master == m_masterTable && details == m_details;
    if (same) {
        follow();
        return;
    }
    if (!m_rows.leave())
        return;
    const std::wstring chosen = m_choice.text();
    clear();
    m_connection = &connection;
    m_masterTable = master;
    m_details = std::move(details);
    for (const DetailTable& detail : m_details)
        m_choice.insertLine(detail.caption.c_str());
    m_choice.enable(!m_details.empty());
    layOut();
    if (m_details.empty())
        m_rows.showNotice(TextNoticeNoDetails, TextNoticeNoDetailsHint,
                          [name = m_masterTable.name] { return name; });
    else
        m_choice.setCurrentLine(std::max(0, m_choice.findText(chosen.c_str())));
}

void DetailPane::clear()
{
    m_rest.stop();
    showNotice(TextNoticeNoMaster, TextNoticeNoMasterHint);
    m_details.clear();
    m_chosen = -1;
    m_row = 0;
    m_choice.clear();
    m_masterTable = {};
    m_connection = nullptr;
}

DatabaseTable DetailPane::table() const
{
    return m_chosen < 0 ? DatabaseTable() : m_details[static_cast<size_t>(m_chosen)].key.detail;
}

bool DetailPane::masterHasRow()
{
    const long row = m_master.view().GetRow();
    return m_master.hasRows() && row != 0 && !m_master.rows()->IsVirtualRow(row);
}

SlotResult DetailPane::onChoice(OviAPI::Object*)
{
    if (m_choice.currentLine() != m_chosen)
        showDetail(m_choice.currentLine());
    return 1;
}

void DetailPane::showDetail(int number)
{
    if (!m_rows.leave()) {
        m_choice.setCurrentLine(m_chosen);
        return;
    }
    m_chosen = number;
    showNotice(TextNoticeReading, TextNoticeReadingHint, [name = table().name] { return name; });
    askForRows();
}

// --- following the master

void DetailPane::follow()
{
    if (m_chosen < 0 || m_goingBack)
        return;
    const long row = masterHasRow() ? m_master.view().GetRow() : 0;
    if (row == m_row && m_master.edition() == m_edition)
        return;
    if (!m_rows.leave()) { // the user stays with what he has typed
        m_goingBack = true;
        m_master.view().SetRow(m_row);
        m_goingBack = false;
        return;
    }
    m_row = row;
    m_edition = m_master.edition();
    m_rows.view().SetReadOnly(true); // these rows are about to go
    m_rest.start();
}

SlotResult DetailPane::onRested(OviAPI::Object*)
{
    askForRows();
    return 1;
}

// Makes the dataset of the chosen detail, linked to the master's columns. False when the master
// does not show them.
bool DetailPane::openRows()
{
    const ForeignKey& key = m_details[static_cast<size_t>(m_chosen)].key;
    auto rows =
        std::make_unique<DetailRows>(*m_connection, detailQueryText(key),
                                     [this](const DorCPP::DorX* error) { takeRows(error); });
    for (size_t i = 0; i < key.columns.size(); ++i) {
        const int column = m_master.columnOf(key.columns[i].master);
        if (column == 0)
            return false;
        rows->AddLink(column, static_cast<int>(i) + 1);
    }
    m_waiting = std::move(rows);
    m_detail = m_waiting.get();
    return true;
}

void DetailPane::askForRows()
{
    m_rest.stop();
    m_row = masterHasRow() ? m_master.view().GetRow() : 0;
    m_edition = m_master.edition();
    if (m_row == 0 || (!m_detail && !openRows()))
        return showNotice(TextNoticeNoMaster, TextNoticeNoMasterHint);
    m_rows.view().SetReadOnly(true);
    try {
        m_detail->readFor(m_master.rows(), m_row);
    } catch (const DorCPP::DorX& x) {
        takeRows(&x);
    }
}

// The last thing that a reading does: the dataset may go here.
void DetailPane::takeRows(const DorCPP::DorX* error)
{
    if (error)
        return showNotice(TextNoticeTableFailed, TextNoticeTableFailedHint,
                          [x = *error] { return messageOf(x); });
    if (m_waiting)
        m_rows.showRows(std::move(m_waiting), table().name, false);
    else
        m_rows.rowsReplaced();
}

void DetailPane::cancel()
{
    if (!isReading())
        return;
    m_detail->cancel();
    showNotice(TextNoticeTableFailed, TextNoticeTableFailedHint,
               [] { return textOf(TextErrorStopped); });
}

// The rows go, those that are still being read as well.
void DetailPane::showNotice(TextId heading, TextId hint, RowsPane::Words argument)
{
    m_detail = nullptr; // first: whoever is told asks whether it is still reading
    m_waiting.reset();
    m_rows.showNotice(heading, hint, std::move(argument));
}

// A new row belongs to the master's row.
SlotResult DetailPane::onRowBegun(OviAPI::Object*)
{
    const ForeignKey& key = m_details[static_cast<size_t>(m_chosen)].key;
    xCDorvexDataSet* rows = m_rows.rows();
    for (const ForeignKey::Pair& pair : key.columns) {
        const int from = m_master.columnOf(pair.master);
        const int to = m_rows.columnOf(pair.detail);
        if (from == 0 || to == 0 || m_master.rows()->SetRow(m_row) != 0)
            continue;
        auto data = rows->AllocData(to, nullptr, OviAPI::ValueForm);
        const std::wstring value = m_master.rows()->CellText(from);
        if (!m_master.rows()->IsNull(from) &&
            rows->TextToData(to, value, data.get()) == OviAPI::TextFault::None)
            rows->StoreCell(to, rows->GetVirtualRow(), data.get());
    }
    return 0;
}

void DetailPane::loadTexts()
{
    m_label.setText(textOf(TextDetailsLabel).c_str());
    m_rows.loadTexts();
    layOut();
}

bool DetailPane::onSize()
{
    layOut();
    return false;
}

void DetailPane::layOut()
{
    if (!m_choice.isCreated())
        return;
    const OviAPI::Size size = clientSize();
    const int line = OviAPI::GetTextSize(font(), L"Xg").height;
    const int field = line + 12;
    const int label = OviAPI::GetTextSize(font(), textOf(TextDetailsLabel)).width + 2;
    int widest = narrowestChoice;
    for (const DetailTable& detail : m_details)
        widest =
            std::max(widest, OviAPI::GetTextSize(font(), detail.caption).width + choicePadding);
    const int left = 2 * margin + label;
    m_label.move(margin, margin + (field - line) / 2, label, line + 2);
    m_choice.move(left, margin, std::clamp(widest, 0, std::max(0, size.width - left - margin)),
                  field);
    const int top = field + 2 * margin;
    m_rows.move(0, top, size.width, std::max(0, size.height - top));
}
