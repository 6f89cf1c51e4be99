// Opening, storing and taking back; keys, the mouse and places stand in recordeditorinput.cpp.
#include <oviapi/recordeditor.h>

#include <algorithm>
#include <utility>

#include <oviapi/celldisplay.h>
#include <oviapi/phrases.h>
#include <oviapi/recordview.h>

namespace OviAPI {

namespace {

constexpr size_t saidChars = 200; // of a value in a sentence

} // namespace

RecordEditor::RecordEditor(aCRecordView& view)
    : m_view(view)
{
}

RecordEditor::~RecordEditor() = default;

aCDataSet* RecordEditor::data() const
{
    return m_view.m_dataSet;
}

long RecordEditor::newRow() const
{
    return data() ? data()->GetVirtualRow() : 0;
}

void RecordEditor::setReadOnly(bool readOnly)
{
    m_readOnly = readOnly;
    CellField::acceptCompositions(m_view, !readOnly);
}

// --- opening

bool RecordEditor::open(int col, long row, Start start)
{
    if (m_field && col == m_col && row == m_row)
        return true;
    if (!goTo(col, row) || !fieldFor(col, row, true))
        return false;
    makeField();
    m_field->setText(m_edited.original);
    m_field->selectAll();
    const auto alive = m_view.life();
    m_field->takeFocus();
    if (alive.expired() || !m_field)
        return false;
    if (start == Start::Dropped)
        m_field->dropList();
    return true;
}

bool RecordEditor::openTyped(std::wstring_view text)
{
    const int col = m_view.GetCol();
    const long row = m_view.GetRow();
    if (!goTo(col, row) || !fieldFor(col, row, false))
        return false;
    makeField();
    m_edited.touched = true;
    m_field->setText(text);
    const auto alive = m_view.life();
    m_field->takeFocus();
    return !alive.expired() && m_field;
}

void RecordEditor::composeInCell()
{
    const int col = m_view.GetCol();
    const long row = m_view.GetRow();
    if (!m_readOnly && goTo(col, row) && fieldFor(col, row, false))
        makeField();
}

bool RecordEditor::goTo(int col, long row)
{
    const auto alive = m_view.life();
    if (!m_view.isCreated() || m_view.m_listBox || !data() || !m_view.SetFocusCell(col, row))
        return false;
    return !alive.expired() && data() && m_view.GetCol() == col && m_view.GetRow() == row;
}

bool RecordEditor::fieldFor(int col, long row, bool opens)
{
    if (!m_view.fetchRow(row)) {
        sayNote(m_view.GetRowFault(row));
        return false;
    }
    const CellWay way = cellWay(*data(), col);
    if (way == CellWay::Opened && opens) {
        const auto alive = m_view.life();
        if (dispatchOpenValue(col, row) || alive.expired() || !data())
            return false;
    }
    if (way == CellWay::Field && !m_readOnly)
        return true;
    if (way == CellWay::Check && !m_readOnly)
        sayNote(phrase(Phrase::MarkKeys));
    else
        sayNote(readOnlyReason(col));
    return false;
}

std::wstring RecordEditor::readOnlyReason(int col) const
{
    if (m_readOnly)
        return phrase(Phrase::TableReadOnly);
    aCString reason = data()->ReadOnlyReason(col);
    if (!reason.empty())
        return reason;
    return phrase(data()->IsUpdatable(col) ? Phrase::ValueOpened : Phrase::SourceReadOnly);
}

bool RecordEditor::dispatchOpenValue(int col, long row)
{
    const auto result = dispatch<&aCRecordView::onOpenValue>(m_view, col, row);
    return result.senderDied || result.bySlot || result.value;
}

void RecordEditor::keepOriginal()
{
    const bool touched = m_edited.touched;
    m_edited = {};
    m_edited.touched = touched;
    m_edited.none = (data()->CellState(m_col) & (StampNull | defaultStamps)) != 0;
    if (!m_edited.none)
        m_edited.original = data()->CellText(m_col);
}

void RecordEditor::makeField()
{
    m_again.reset();
    m_tip.reset();
    m_refused = false;
    m_col = m_view.GetCol();
    m_row = m_view.GetRow();
    m_edited = {};
    data()->SetRow(m_row);
    keepOriginal();
    const bool fresh = data()->IsVirtualRow(m_row);
    if (!fresh)
        data()->BeginEdit(m_row);
    const aCColumn& column = *data()->GetColInfo(m_col);
    const aCString row = fresh ? phrase(Phrase::NewRow) : m_view.GetRowCaption(m_row);
    CellField::Look look;
    look.font = m_view.GetCellFont(m_col);
    look.right = standsRight(column);
    if (column.displayKind == aCColumn::DropDown)
        look.choices = column.choices;
    look.name = column.caption + L", " + row;
    // One more than any value has: what is too long is seen and refused, not cut.
    const auto most = std::max<size_t>(column.displaySize(), UINT16_MAX);
    look.mostChars = static_cast<int>(std::min<size_t>(most, INT32_MAX - 1) + 1);
    CellField::User& user = *this;
    m_field = std::make_unique<CellField>(m_view, user, look);
    place();
    m_view.repaintRow(m_row);
}

void RecordEditor::close()
{
    if (!m_field)
        return;
    const auto closed = std::move(m_field); // what it calls finds no field any more
    m_refused = false;
    if (m_tipFor == TipFor::Field)
        m_tip.reset();
    if (data())
        data()->EndEdit();
    m_view.repaintRow(m_row);
}

void RecordEditor::drop()
{
    close();
    m_tip.reset();
    m_again.reset();
    m_newRowFault.clear();
    m_newRow = 0;
}

void RecordEditor::nativeComes()
{
    CellField::watchCompositions(m_view);
    CellField::acceptCompositions(m_view, !m_readOnly);
}

void RecordEditor::nativeGoes()
{
    close();
    m_tip.reset();
}

// --- storing

StoreNeed RecordEditor::need()
{
    m_edited.text = m_field->text();
    const aCColumn* column = data()->GetColInfo(m_col); // none when it has just been taken out
    return column ? storeNeed(*column, m_edited) : StoreNeed::Nothing;
}

RecordEditor::Outcome RecordEditor::store()
{
    if (!m_field)
        return Outcome::Done;
    if (m_busy)
        return Outcome::Refused;
    const auto alive = m_view.life();
    switch (need()) {
    case StoreNeed::Nothing:
        takeBack();
        return alive.expired() ? Outcome::Gone : Outcome::Done;
    case StoreNeed::NullKey:
        return refused(m_col, m_row, phrase(Phrase::NullKey));
    case StoreNeed::Text:
        break;
    }
    return putText(m_col, m_row, m_edited.text);
}

RecordEditor::Outcome RecordEditor::putText(int col, long row, std::wstring_view text)
{
    auto cell = data()->AllocData(col, nullptr, ValueForm);
    const TextFault fault = data()->TextToData(col, text, cell.get());
    if (fault != TextFault::None)
        return refused(col, row, faultText(fault));
    return put(col, row, std::move(cell));
}

// Lets the dataset work. What it tells meanwhile is shown afterwards, so that no slot runs inside.
RecordEditor::Work RecordEditor::run(const std::function<short()>& function)
{
    const auto alive = m_view.life();
    Work work;
    m_busy = true;
    try {
        work.result = function();
    } catch (...) {
        work.thrown = std::current_exception();
    }
    work.gone = alive.expired();
    if (work.gone)
        return work;
    m_busy = false;
    const long row = std::exchange(m_changedRow, 0);
    if (std::exchange(m_changedMeanwhile, false))
        m_view.ReShow(0, false, true, true, nullptr);
    else if (row != 0)
        m_view.showRowAnew(row);
    work.gone = alive.expired() || !data();
    return work;
}

RecordEditor::Outcome RecordEditor::put(int col, long row, std::unique_ptr<std::byte[]> cell)
{
    aCDataSet& set = *data();
    if (!m_field && !set.IsVirtualRow(row))
        set.BeginEdit(row);
    const Work work = run([&] { return set.StoreCell(col, row, cell.get()); });
    if (work.gone)
        return Outcome::Gone;
    if (work.result == 0 && !work.thrown)
        return stored(col, row);
    if (m_field) {
        m_refused = true;
    } else {
        set.EndEdit();
        m_again = Change{col, row, std::move(cell)};
    }
    const Outcome outcome = refused(col, row, errorOf(row));
    if (work.thrown)
        std::rethrow_exception(work.thrown);
    return outcome;
}

std::wstring RecordEditor::errorOf(long row) const
{
    const auto* error = data()->getRowError(row);
    return error && !error->text.empty() ? error->text : phrase(Phrase::NotStored);
}

RecordEditor::Outcome RecordEditor::refused(int col, long row, const std::wstring& sentence)
{
    if (m_field)
        m_field->describe(sentence, CellTip::Kind::Fault);
    say(sentence, m_field ? TipFor::Field : TipFor::Cell, CellTip::Kind::Fault);
    m_view.repaintRow(row);
    const auto result = dispatch<&aCRecordView::onEditRefused>(m_view, col, row);
    return result.senderDied ? Outcome::Gone : Outcome::Refused;
}

RecordEditor::Outcome RecordEditor::stored(int col, long row)
{
    if (data()->IsVirtualRow(row))
        m_given.erase(col);
    else
        data()->clearRowError(row);
    data()->EndEdit();
    m_again.reset();
    hideNote();
    close();
    m_view.repaintRow(row);
    const auto alive = m_view.life();
    dispatch<&aCRecordView::onEditStored>(m_view, col, row);
    return alive.expired() || !data() ? Outcome::Gone : Outcome::Done;
}

// The row is shown as it is stored, when the dataset has refused to change it.
void RecordEditor::takeBack()
{
    if (!m_field)
        return;
    const bool wasRefused = m_refused;
    const long row = m_row;
    const auto alive = m_view.life();
    close();
    if (wasRefused && data() && !data()->IsVirtualRow(row))
        refresh(row);
    if (!alive.expired())
        dispatch<&aCRecordView::onEditEnded>(m_view);
}

bool RecordEditor::finish()
{
    if (m_busy || store() != Outcome::Done)
        return false;
    return m_readOnly || newRow() == 0 || post() == Outcome::Done;
}

bool RecordEditor::isPending()
{
    return (m_field && need() != StoreNeed::Nothing) || (!m_readOnly && isNewRowTouched());
}

void RecordEditor::giveUp()
{
    const auto alive = m_view.life();
    takeBack();
    if (!alive.expired() && !m_readOnly && newRow() != 0)
        takeNewRow();
}

// --- the new row

bool RecordEditor::isNewRowTouched() const
{
    const long row = newRow();
    if (row == 0 || data()->SetRow(row) != 0)
        return false;
    for (int col = 1; col <= data()->GetColCount(); ++col)
        if ((data()->CellState(col) & StampUntouched) == 0 && !m_given.contains(col))
            return true;
    return false;
}

RecordEditor::Outcome RecordEditor::post()
{
    const auto alive = m_view.life();
    const long row = newRow();
    if (!isNewRowTouched()) {
        takeNewRow();
        return alive.expired() ? Outcome::Gone : Outcome::Done;
    }
    const bool wasRefused = !m_newRowFault.empty();
    const Work work = run([this] { return data()->PostVirtualRow(); });
    if (work.gone)
        return Outcome::Gone;
    if (work.result == 0 && !work.thrown) {
        if (wasRefused)
            data()->clearRowError(0);
        m_newRowFault.clear();
        m_tip.reset();
        dispatch<&aCRecordView::onEditStored>(m_view, 0, row);
        return alive.expired() || !data() ? Outcome::Gone : Outcome::Done;
    }
    m_newRowFault = errorOf(0);
    say(m_newRowFault, TipFor::NewRow, CellTip::Kind::Fault);
    m_view.repaintRow(row);
    const auto result = dispatch<&aCRecordView::onEditRefused>(m_view, 0, row);
    if (work.thrown)
        std::rethrow_exception(work.thrown);
    return result.senderDied ? Outcome::Gone : Outcome::Refused;
}

void RecordEditor::takeNewRow()
{
    if (m_field && data()->IsVirtualRow(m_row))
        close();
    m_tip.reset();
    if (!std::exchange(m_newRowFault, {}).empty())
        data()->clearRowError(0);
    const auto alive = m_view.life();
    data()->DeleteVirtualRow();
    if (!alive.expired())
        dispatch<&aCRecordView::onEditEnded>(m_view);
}

bool RecordEditor::append()
{
    const auto alive = m_view.life();
    if (m_readOnly || m_view.m_listBox || !data() || !finish() || alive.expired() || !data())
        return false;
    aCDataSet& set = *data();
    bool updatable = false;
    for (int col = 1; col <= set.GetColCount(); ++col)
        updatable = updatable || set.IsUpdatable(col);
    if (!updatable) {
        if (set.GetColCount() > 0)
            sayNote(readOnlyReason(1));
        return false;
    }
    const short result = set.AddRow(nullptr, 0);
    if (alive.expired() || !data())
        return false;
    if (result != 0 || newRow() == 0) {
        sayNote(errorOf(0));
        return false;
    }
    m_given.clear();
    if (!m_view.SetFocusCell(std::max(1, m_view.GetCol()), newRow()) || alive.expired())
        return false;
    dispatch<&aCRecordView::onRowBegun>(m_view, newRow());
    if (alive.expired() || !data() || newRow() == 0 || data()->SetRow(newRow()) != 0)
        return false;
    for (int col = 1; col <= data()->GetColCount(); ++col)
        if ((data()->CellState(col) & StampUntouched) == 0)
            m_given.insert(col);
    return true;
}

bool RecordEditor::deleteFocused()
{
    const long row = m_view.GetRow();
    if (m_readOnly || m_busy || !data() || row == 0)
        return false;
    if (data()->IsVirtualRow(row)) {
        takeNewRow();
        return true;
    }
    close();
    const Work work = run([this, row] { return data()->DeleteRow(row); });
    if (work.gone)
        return work.result == 0;
    if (work.result != 0 || work.thrown)
        say(errorOf(row), TipFor::Cell, CellTip::Kind::Fault);
    m_view.ReShow(0, false, false, true, nullptr);
    if (work.thrown)
        std::rethrow_exception(work.thrown);
    return work.result == 0;
}

// --- cells without an editor

bool RecordEditor::mayChange()
{
    const int col = m_view.GetCol();
    const long row = m_view.GetRow();
    if (m_view.m_listBox || m_busy || !data() || row == 0)
        return false;
    if (!m_view.fetchRow(row)) {
        sayNote(m_view.GetRowFault(row));
        return false;
    }
    if (!m_readOnly && data()->IsUpdatable(col) && data()->ReadOnlyReason(col).empty())
        return true;
    sayNote(readOnlyReason(col));
    return false;
}

bool RecordEditor::setStamp(unsigned stamp)
{
    if (!mayChange())
        return false;
    const int col = m_view.GetCol();
    const long row = m_view.GetRow();
    if ((data()->CellState(col) & stamp) != 0) { // it is so already
        const auto alive = m_view.life();
        takeBack();
        return !alive.expired();
    }
    auto cell = data()->AllocData(col, nullptr, ValueForm);
    data()->SetDataStamp(col, cell.get(), stamp);
    return put(col, row, std::move(cell)) == Outcome::Done;
}

bool RecordEditor::setNull()
{
    return setStamp(StampNull);
}

bool RecordEditor::setDefault()
{
    if (data() && m_view.GetRow() != 0 && !m_readOnly && m_view.GetRow() != newRow()) {
        sayNote(phrase(Phrase::DefaultNewRow));
        return false;
    }
    return setStamp(StampDefault);
}

bool RecordEditor::toggle()
{
    return mayChange() && putText(m_view.GetCol(), m_view.GetRow(),
                                  switchedMark(*data(), m_view.GetCol())) == Outcome::Done;
}

// --- a row that another session has changed

// False when the row cannot be read, or the view has gone.
bool RecordEditor::refresh(long row)
{
    // What is thrown is the row's error as well.
    const Work work = run([this, row] { return data()->RefreshRow(row); });
    if (work.gone)
        return false;
    m_view.showRowAnew(row);
    return work.result == 0 && !work.thrown;
}

bool RecordEditor::keepMine()
{
    if (m_busy || !data() || (!m_field && !m_again))
        return false;
    const auto alive = m_view.life();
    const int col = m_field ? m_col : m_again->col;
    const long row = m_field ? m_row : m_again->row;
    if (!data()->IsVirtualRow(row) && !refresh(row)) {
        if (!alive.expired() && data())
            refused(col, row, errorOf(row));
        return false;
    }
    if (m_field) {
        keepOriginal();
        data()->BeginEdit(row);
        return store() == Outcome::Done;
    }
    if (!m_again)
        return false;
    Change again = std::move(*m_again);
    m_again.reset();
    return put(col, row, std::move(again.data)) == Outcome::Done;
}

bool RecordEditor::showTheirs()
{
    const long row = m_field ? m_row : m_view.GetRow();
    if (m_busy || !data() || row == 0 || data()->IsVirtualRow(row))
        return false;
    const auto alive = m_view.life();
    if (!refresh(row)) {
        if (!alive.expired() && data())
            say(errorOf(row), m_field ? TipFor::Field : TipFor::Cell, CellTip::Kind::Fault);
        return false;
    }
    hideNote();
    if (!m_field)
        return true;
    keepOriginal();
    data()->BeginEdit(row);
    m_refused = false;
    const aCString word = m_view.GetCellWord(m_col, row);
    const std::wstring value = word.empty() ? shownLine(m_edited.original) : word;
    const bool cut = value.size() > saidChars;
    const std::wstring sentence =
        phrase(Phrase::StoredNow, cut ? value.substr(0, saidChars) + L"..." : value);
    m_field->describe(sentence, CellTip::Kind::Note);
    say(sentence, TipFor::Field, CellTip::Kind::Note);
    return true;
}

} // namespace OviAPI
