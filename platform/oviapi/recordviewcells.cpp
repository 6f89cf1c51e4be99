// The texts of a record view's cells, and widths fitted to them.
#include <oviapi/recordview.h>

#include <algorithm>

#include <oviapi/painter.h>
#include <oviapi/phrases.h>
#include <oviapi/recordeditor.h>

namespace OviAPI {

namespace {

constexpr int margin = 8;      // pixels that a column has beside its content
constexpr int wideMargin = 18; // the same with the wide-margin flag
constexpr int dropButton = 15;
constexpr int checkMark = 15;
constexpr size_t hintChars = 1024;
constexpr int columnsFittedAtFirst = 64; // more are fitted when the user asks for it

std::wstring_view cut(std::wstring_view text, int maxChars)
{
    return maxChars > 0 ? text.substr(0, static_cast<size_t>(maxChars)) : text;
}

// Characters that a column of the type shows at least, before its values are known.
int usualChars(const aCColumn& column)
{
    const auto most = static_cast<int>(std::min<size_t>(column.displaySize(), 20));
    switch (static_cast<DataType>(column.dataType)) {
    case DataType::Int32:
    case DataType::Int16:
    case DataType::Boolean:
        return 5;
    case DataType::DateTime:
        return 19;
    case DataType::LargeObject:
        return 6;
    default:
        return std::min(most, 10);
    }
}

} // namespace

int aCRecordView::fittedWidth(int col, int content) const
{
    const aCColumn& column = *m_dataSet->GetColInfo(col);
    int width = content + (m_wideMargin ? wideMargin : margin);
    if (column.displayKind == aCColumn::DropDown)
        width += dropButton;
    return std::clamp<int>(std::max<int>(width, column.minWidth), 0, INT16_MAX);
}

int aCRecordView::cellWidth(int col, int maxChars)
{
    const aCColumn& column = *m_dataSet->GetColInfo(col);
    if (column.displayKind == aCColumn::CheckMark)
        return checkMark;
    const Font cellFont = GetCellFont(col);
    const size_t most = maxChars > 0 ? static_cast<size_t>(maxChars) : hintChars;
    int width = 0;
    // Before the view has its place on the screen, a usual page counts.
    const long page = std::max(GetRowOnPage(), clientHeight() < 4 * m_fontHeight ? 20L : 1L);
    const long last = std::min(m_rows, m_firstRow + page - 1);
    for (long row = m_firstRow; row <= last; ++row) {
        if (!fetchRow(row))
            continue;
        if (column.displayKind == aCColumn::ImageCell) {
            if (const Picture* picture = GetCellImage(col, row))
                width = std::max(width, std::min(picture->width(), m_pictureLimit));
            continue;
        }
        const aCString word = GetCellWord(col, row);
        const aCString text = word.empty() ? m_dataSet->CellText(col, most) : word;
        width = std::max(width, GetTextSize(cellFont, text).width);
    }
    return width;
}

int aCRecordView::contentWidth(int col, const FitParts& parts)
{
    const aCColumn& column = *m_dataSet->GetColInfo(col);
    int width = 0;
    if (parts.header) {
        if (!column.headerPicture.isNull())
            width = std::min(column.headerPicture.width(), m_pictureLimit);
        else if (const Picture* image = GetHeaderImage(col))
            width = std::min(image->width(), m_pictureLimit);
        else
            width = GetTextSize(GetHeaderFont(col), cut(column.caption, parts.maxChars)).width;
    }
    return parts.cells ? std::max(width, cellWidth(col, parts.maxChars)) : width;
}

// Columns without a width get one from their type, their caption and the first page.
void aCRecordView::initWidths()
{
    if (!isCreated() || !m_dataSet)
        return;
    const int most = 60 * m_charWidth;
    for (int col = 1; col <= GetColCount(); ++col) {
        aCColumn& column = *m_dataSet->GetColInfo(col);
        if (column.width != 0)
            continue;
        const FitParts parts{true, col <= columnsFittedAtFirst, m_alignChars};
        const int content = std::max(contentWidth(col, parts), usualChars(column) * m_charWidth);
        column.width = static_cast<int16_t>(fittedWidth(col, std::min(content, most)));
    }
}

void aCRecordView::fitColumns(short mode, short maxChars)
{
    if (!isCreated() || !m_dataSet)
        return;
    const bool all = mode == aCClientAreaBroker::AlignAll;
    const FitParts parts{all || mode == aCClientAreaBroker::AlignHeaders,
                         all || mode == aCClientAreaBroker::AlignCells, maxChars};
    if (parts.header || parts.cells)
        for (int col = 1; col <= GetColCount(); ++col)
            m_dataSet->GetColInfo(col)->width =
                static_cast<int16_t>(fittedWidth(col, contentWidth(col, parts)));
    if (m_rowHeaders && (all || mode == aCClientAreaBroker::AlignRowHeader)) {
        m_broker->rowHeaderWidth = m_wideRowHeader ? 10 : 0;
        m_rows = -1; // measured with the rows
    }
    syncLayout();
    updateBars();
}

void aCRecordView::SetColAlignment(short mode, short maxChars)
{
    m_alignMode = mode;
    m_alignChars = maxChars;
    m_broker->SetColAlignment(mode, maxChars);
    syncLayout();
    updateBars();
    repaint();
}

void aCRecordView::FitColumn(int col)
{
    if (!m_dataSet || !m_dataSet->GetColInfo(col) || !isCreated())
        return;
    const int most = std::max(clientWidth() - m_broker->rowHeaderWidth, 10 * m_charWidth);
    SetColWidth(col, fittedWidth(col, std::min(contentWidth(col, {}), most - wideMargin)));
}

void aCRecordView::SetColWidth(int col, int width)
{
    aCColumn* column = m_dataSet ? m_dataSet->GetColInfo(col) : nullptr;
    if (!column)
        return;
    const int least = std::max<int>(column->minWidth, margin);
    column->width = static_cast<int16_t>(std::clamp<int>(width, least, INT16_MAX));
    if (!syncLayout())
        return;
    updateBars();
    Rect right{static_cast<int>(std::max<int64_t>(columnX(col), 0)), 0, clientWidth(),
               clientHeight()};
    repaint(right);
}

Font aCRecordView::GetCellFont(int col) const
{
    const aCColumn* column = m_dataSet ? m_dataSet->GetColInfo(col) : nullptr;
    return column && !column->cellFont.isEmpty() ? column->cellFont : font();
}

Font aCRecordView::GetHeaderFont(int col) const
{
    const aCColumn* column = m_dataSet ? m_dataSet->GetColInfo(col) : nullptr;
    return column && !column->headerFont.isEmpty() ? column->headerFont : font();
}

size_t aCRecordView::GetCellText(int col, long row, wchar_t* text, size_t size)
{
    if (size == 0)
        return 0;
    text[0] = 0;
    return m_dataSet && fetchRow(row) ? m_dataSet->GetCellText(col, row, text, size) : 0;
}

aCString aCRecordView::GetCellText(int col, long row)
{
    return m_dataSet && fetchRow(row) ? m_dataSet->CellText(col) : aCString();
}

const void* aCRecordView::GetCellData(int col, long row)
{
    return m_dataSet && fetchRow(row) ? m_dataSet->GetCellData(col, row) : nullptr;
}

int aCRecordView::GetImageIndex(int col, long row)
{
    short state = 1;
    if (!m_dataSet || !fetchRow(row))
        return -1;
    const double number = m_dataSet->GetCellNumber(col, row, &state);
    return state == 0 && number >= 0 && number < INT16_MAX ? static_cast<int>(number) : -1;
}

const Picture* aCRecordView::GetCellImage(int col, long row)
{
    const auto index = static_cast<size_t>(GetImageIndex(col, row));
    return index < m_cellImages.size() ? &m_cellImages[index] : nullptr;
}

const Picture* aCRecordView::GetHeaderImage(int col) const
{
    const aCColumn* column = m_dataSet ? m_dataSet->GetColInfo(col) : nullptr;
    if (!column || column->headerImage < 0)
        return nullptr;
    const auto index = static_cast<size_t>(column->headerImage);
    return index < m_headerImages.size() ? &m_headerImages[index] : nullptr;
}

Rect aCRecordView::GetImageRect(const Rect& inside, const Picture& picture) const
{
    const int width = std::min(picture.width(), m_pictureLimit);
    const int height = std::min(picture.height(), m_pictureLimit);
    const int left = inside.left + margin / 2;
    const int top = inside.top + std::max(0, static_cast<int>(inside.height()) - height) / 2;
    return {left, top, std::max(left, std::min(left + width, inside.right)),
            std::max(top, std::min(top + height, inside.bottom))};
}

aCString aCRecordView::GetRowCaption(long row)
{
    if (!m_dataSet)
        return {};
    if (const aCRow* info = m_dataSet->GetRowInfo(row); info && !info->caption.empty())
        return info->caption;
    return m_dataSet->IsVirtualRow(row) ? L"*" : std::to_wstring(row);
}

aCString aCRecordView::GetCellWord(int col, long row)
{
    if (!m_dataSet || !m_dataSet->GetColInfo(col) || !fetchRow(row))
        return {};
    const unsigned state = m_dataSet->CellState(col);
    for (const unsigned kind : {StampNull, StampDefault, StampUntouched, StampServer})
        if ((state & kind) != 0)
            return m_dataSet->GetStamp(kind);
    const bool large =
        m_dataSet->GetColInfo(col)->dataType == static_cast<unsigned char>(DataType::LargeObject);
    return large ? L"BLOB" : aCString();
}

aCString aCRecordView::GetRowFault(long row)
{
    if (row < 1 || row > GetRowCount() || fetchRow(row))
        return {};
    const auto it = m_faults.find(row);
    return it == m_faults.end() ? aCString() : it->second;
}

aCString aCRecordView::GetEmptyText()
{
    if (!m_dataSet)
        return {};
    return phrase(GetColCount() == 0 ? Phrase::NoColumns : Phrase::NoRows);
}

SlotResult aCRecordView::onCharsetChanged(Object* sender)
{
    ReShow(0, false, false, true, nullptr);
    return aCApsWnd::onCharsetChanged(sender);
}

std::wstring aCRecordView::cellHint(int col, long row)
{
    aCString fault = GetRowFault(row);
    if (!fault.empty())
        return fault;
    Rect cell;
    if (!GetClientCellRect(col, row, cell) || !fetchRow(row))
        return {};
    std::wstring hint;
    const aCColumn& column = *m_dataSet->GetColInfo(col);
    if (column.displayKind != aCColumn::CheckMark && column.displayKind != aCColumn::ImageCell) {
        const aCString text = m_dataSet->CellText(col, hintChars);
        const Size size = GetTextSize(GetCellFont(col), text);
        const bool lines = text.find_first_of(L"\r\n") != aCString::npos;
        if (lines || size.width > cell.width() - margin)
            hint = text.size() == hintChars ? text + L"..." : text;
    }
    const auto add = [&hint](const aCString& sentence) {
        if (!sentence.empty())
            hint += (hint.empty() ? L"" : L"\n") + sentence;
    };
    const aCString reason = m_dataSet->ReadOnlyReason(col);
    add(m_dataSet->CellReason(col));
    if (!m_dataSet->IsUpdatable(col))
        add(reason);
    if (const auto* error = m_dataSet->getRowError(row))
        add(error->text);
    return hint;
}

std::wstring aCRecordView::hintAt(int x, int y)
{
    if (syncLayout())
        updateBars();
    if (!m_dataSet)
        return {};
    const int col = GetColFromPoint(x, y);
    if (y < m_broker->headerHeight) {
        Rect header;
        if (!GetColRect(col, header, nullptr, true))
            return {};
        const aCString& caption = m_dataSet->GetColInfo(col)->caption;
        const bool fits = GetTextSize(GetHeaderFont(col), caption).width <= header.width() - margin;
        return fits ? std::wstring() : caption;
    }
    const long row = GetRowFromPoint(x, y);
    if (row == 0)
        return {};
    if (col != 0)
        return cellHint(col, row);
    aCString newRow = m_editor->newRowFault(row);
    if (!newRow.empty())
        return newRow;
    const auto* error = m_dataSet->getRowError(row);
    return error ? error->text : GetRowFault(row);
}

} // namespace OviAPI
