// What a record editor does with keys, the mouse and scrolling, and what it shows.
#include <oviapi/recordeditor.h>

#include <algorithm>
#include <utility>

#include <oviapi/phrases.h>
#include <oviapi/recordview.h>

namespace OviAPI {

namespace {

constexpr int leastChars = 8; // that an editor has room for

} // namespace

// --- what the view and the field tell

CellField::Answer RecordEditor::onFieldKey(VirtualKey key)
{
    const int col = m_col;
    const long row = m_row;
    switch (fieldKey(key)) {
    case FieldKey::Typing:
        return Answer::Typing;
    case FieldKey::GiveUp:
        takeBack();
        break;
    case FieldKey::Enter:
        if (store() == Outcome::Done && row < m_view.m_rows)
            m_view.moveFocus(col, row + 1, false);
        break;
    case FieldKey::Leave:
        return store() == Outcome::Done ? Answer::Pass : Answer::Used;
    case FieldKey::Null:
        setNull();
        break;
    case FieldKey::Default:
        setDefault();
        break;
    case FieldKey::Nothing:
        break;
    }
    return Answer::Used;
}

void RecordEditor::onFieldText()
{
    m_edited.touched = true;
}

void RecordEditor::onFieldLeft()
{
    const auto alive = m_view.life();
    store();
    if (!alive.expired())
        dispatch<&VisualObject::onLostFocus>(m_view);
}

void RecordEditor::onFieldUnused()
{
    close();
}

std::optional<bool> RecordEditor::keyDown(VirtualKey key)
{
    m_keyTypes = !key.control() && !key.alt() && (key.modifiers() & ModifierSuper) == 0;
    hideNote();
    if (m_view.m_listBox || !data())
        return std::nullopt;
    const int col = m_view.GetCol();
    const long row = m_view.GetRow();
    const ViewKey what = viewKey(key);
    if (what == ViewKey::Edit && m_readOnly)
        return row != 0 && m_view.fetchRow(row) && cellWay(*data(), col) == CellWay::Opened &&
               dispatchOpenValue(col, row);
    if (m_readOnly || what == ViewKey::Other)
        return std::nullopt;
    if (what == ViewKey::NewRow || (what == ViewKey::NewRowBelow && row == m_view.m_rows)) {
        if (row == 0 || row != newRow() || isNewRowTouched())
            append();
        return true;
    }
    if (row == 0)
        return std::nullopt;
    switch (what) {
    case ViewKey::Edit:
        open(col, row);
        return true;
    case ViewKey::List:
        if (data()->GetColInfo(col)->displayKind != aCColumn::DropDown)
            return std::nullopt;
        open(col, row, Start::Dropped);
        return true;
    case ViewKey::Null:
        setNull();
        return true;
    case ViewKey::Default:
        setDefault();
        return true;
    case ViewKey::DeleteRow: {
        const auto result = dispatch<&aCRecordView::onDeleteRowKey>(m_view, row);
        return result.senderDied || result.bySlot || result.value;
    }
    case ViewKey::Paste:
        if (const std::wstring cell = firstCell(clipboardText()); !cell.empty())
            openTyped(cell);
        return true;
    case ViewKey::GiveUp:
        if (row != newRow())
            return std::nullopt;
        takeNewRow();
        return true;
    default:
        return std::nullopt;
    }
}

bool RecordEditor::typed(wchar_t character)
{
    const long row = m_view.GetRow();
    if (!m_keyTypes || m_readOnly || m_view.m_listBox || !data() || row == 0)
        return false;
    if (m_field) { // the next character of the same key
        m_field->insert(std::wstring_view(&character, 1));
        return true;
    }
    const bool space = character == L' ';
    if (space && m_view.fetchRow(row) && cellWay(*data(), m_view.GetCol()) == CellWay::Check)
        toggle();
    else
        openTyped(std::wstring_view(&character, 1));
    return true;
}

bool RecordEditor::doubleClicked(int col, long row)
{
    if (m_view.m_listBox || !data() || !m_view.fetchRow(row))
        return false;
    const CellWay way = cellWay(*data(), col);
    if (way == CellWay::Check && !m_readOnly)
        return goTo(col, row) && (toggle(), true);
    if (m_readOnly)
        return way == CellWay::Opened && dispatchOpenValue(col, row);
    open(col, row);
    return true;
}

bool RecordEditor::pressed(int x, int y)
{
    hideNote();
    // The editor goes along with the edge of its column.
    if ((!m_field && newRow() == 0) || m_view.GetEdgeFromPoint(x, y) != 0)
        return false;
    const auto alive = m_view.life();
    const bool header = y < m_view.m_broker->headerHeight;
    const bool done = header ? finish() : store() == Outcome::Done;
    if (alive.expired())
        return true;
    if (!done && m_field)
        m_field->takeFocus();
    return !done;
}

bool RecordEditor::leave(int col, long row)
{
    if (m_field && col == m_col && row == m_row)
        return true;
    if (m_busy)
        return false;
    hideNote();
    m_again.reset();
    if (store() != Outcome::Done)
        return false;
    const long fresh = newRow();
    if (m_readOnly || fresh == 0 || m_view.GetRow() != fresh || row == fresh)
        return true;
    return post() == Outcome::Done;
}

bool RecordEditor::scroll(long left, long firstRow)
{
    hideNote();
    if (!m_field)
        return true;
    const aCClientAreaBroker& broker = *m_view.m_broker;
    const long below = m_row - firstRow;
    const bool rowSeen = below >= 0 && broker.headerHeight + below * broker.rowHeight <
                                           static_cast<long>(m_view.clientHeight());
    const long start = m_view.m_columns.left(m_col - 1) - left;
    const long end = m_view.m_columns.right(m_col - 1) - left;
    const bool colSeen = end > 0 && broker.rowHeaderWidth + start < m_view.clientWidth();
    return (rowSeen && colSeen) || store() == Outcome::Done;
}

bool RecordEditor::waitsWithRow(long row)
{
    if (m_busy && m_changedRow != 0 && m_changedRow != row)
        return waitsWithChange();
    if (m_busy)
        m_changedRow = row;
    return m_busy;
}

bool RecordEditor::waitsWithChange()
{
    m_changedMeanwhile = m_changedMeanwhile || m_busy;
    return m_busy;
}

void RecordEditor::followRows()
{
    const long before = std::exchange(m_newRow, newRow());
    if (before != 0 && m_newRow != before) {
        if (m_field && m_row == before && m_newRow == 0)
            close();
        if (m_newRow == 0) {
            m_newRowFault.clear();
        } else {
            m_row = m_row == before ? m_newRow : m_row;
            if (m_view.GetRow() == before)
                m_view.m_selection.moveTo(m_view.GetCol(), m_newRow);
        }
    }
    if (m_field && (!data() || m_col > data()->GetColCount() || m_view.m_rows < 1))
        close();
}

// --- what is shown

RecordEditor::Mark RecordEditor::mark(long row) const
{
    if (m_view.m_faults.contains(row) || data()->getRowError(row) || !newRowFault(row).empty())
        return Mark::Fault;
    return m_field && row == m_row ? Mark::Editing : Mark::None;
}

std::wstring RecordEditor::newRowFault(long row) const
{
    return row != 0 && row == newRow() ? m_newRowFault : std::wstring();
}

std::optional<Rect> RecordEditor::fieldPlace() const
{
    Rect cell;
    // A row that has gone leaves its editor behind: what was typed is not lost.
    if (!m_field || !m_view.GetClientCellRect(m_col, std::min(m_row, m_view.m_rows), cell))
        return std::nullopt;
    return fieldRect(cell, m_view.cellsArea(), leastChars * m_view.m_charWidth);
}

std::optional<Rect> RecordEditor::tipPlace() const
{
    if (m_tipFor == TipFor::Field)
        return fieldPlace();
    Rect place;
    const long row = m_tipFor == TipFor::NewRow ? newRow() : m_tipRow;
    const int col = m_tipFor == TipFor::NewRow ? std::max(1, m_view.GetCol()) : m_tipCol;
    if (!m_view.GetClientCellRect(col, row, place))
        return std::nullopt;
    return fieldRect(place, m_view.cellsArea(), 0);
}

void RecordEditor::place()
{
    if (m_field) {
        m_field->setFont(m_view.GetCellFont(m_col));
        m_field->place(fieldPlace().value_or(Rect{}));
    }
    placeTip();
}

void RecordEditor::placeTip()
{
    if (m_tip)
        m_tip->place(tipPlace().value_or(Rect{}),
                     {0, 0, m_view.clientWidth(), m_view.clientHeight()});
}

void RecordEditor::say(const std::wstring& sentence, TipFor what, CellTip::Kind kind)
{
    m_tip.reset();
    if (!m_view.isCreated() || sentence.empty())
        return;
    m_tipFor = what;
    m_tipCol = m_view.GetCol();
    m_tipRow = m_view.GetRow();
    m_tip = std::make_unique<CellTip>(m_view, sentence, kind);
    placeTip();
}

void RecordEditor::sayNote(const std::wstring& sentence)
{
    say(sentence, TipFor::Cell, CellTip::Kind::Note);
}

void RecordEditor::hideNote()
{
    if (m_tip && m_tipFor == TipFor::Cell)
        m_tip.reset();
}

} // namespace OviAPI
