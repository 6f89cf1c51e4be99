#include <oviapi/celledit.h>

#include <algorithm>

#include <oviapi/celldisplay.h>
#include <oviapi/dataset.h>
#include <oviapi/painter.h>

namespace OviAPI {

namespace {

constexpr wchar_t lineEnds[] = L"\r\n\v\f\x85\x2028\x2029";

DataType typeOf(const aCColumn& column)
{
    return static_cast<DataType>(column.dataType);
}

bool takesEmptyText(const aCColumn& column)
{
    return isTextType(column.dataType) || typeOf(column) == DataType::Bytes;
}

// The cell at the beginning of a table's text, when it stands in quotes.
std::optional<std::wstring> quotedCell(std::wstring_view text)
{
    std::wstring cell;
    if (!text.starts_with(L'"'))
        return std::nullopt;
    for (size_t i = 1; i < text.size(); ++i) {
        if (text[i] != L'"') {
            cell += text[i];
            continue;
        }
        const wchar_t next = i + 1 < text.size() ? text[i + 1] : L'\n';
        if (next == L'"')
            cell += text[++i];
        else if (next == L'\t' || next == L'\r' || next == L'\n')
            return cell;
        else
            return std::nullopt;
    }
    return std::nullopt;
}

} // namespace

CellWay cellWay(aCDataSet& data, int column)
{
    const aCColumn& info = *data.GetColInfo(column);
    const unsigned state = data.CellState(column);
    if (typeOf(info) == DataType::LargeObject || (state & StampCut) != 0)
        return CellWay::Opened;
    const aCString text = data.CellText(column, maxShownChars + 1);
    if (text.size() > maxShownChars || text.find_first_of(lineEnds) != aCString::npos)
        return CellWay::Opened;
    if (!data.IsUpdatable(column) || !data.ReadOnlyReason(column).empty())
        return CellWay::ReadOnly;
    return info.displayKind == aCColumn::CheckMark ? CellWay::Check : CellWay::Field;
}

bool standsRight(const aCColumn& column)
{
    return column.autoAlign ? isNumberType(column.dataType) : (column.cellAlign & TextRight) != 0;
}

bool isMarked(aCDataSet& data, int column)
{
    double number = 0;
    if (valueToNumber(data.GetColInfo(column)->dataType, data.CellBytes(column), number))
        return number != 0;
    const aCString text = data.CellText(column, 8);
    return text == L"true" || text == L"1";
}

std::wstring switchedMark(aCDataSet& data, int column)
{
    const aCColumn& info = *data.GetColInfo(column);
    const bool none = (data.CellState(column) & (StampNull | defaultStamps)) != 0;
    const bool on = none || !isMarked(data, column);
    const aCString text = data.CellText(column, 8);
    const bool digit = isNumberType(info.dataType) || text == L"0" || text == L"1";
    if (digit)
        return on ? L"1" : L"0";
    return on ? L"true" : L"false";
}

StoreNeed storeNeed(const aCColumn& column, const EditedText& edited)
{
    if (!edited.none && edited.text == edited.original)
        return StoreNeed::Nothing;
    if (!edited.text.empty())
        return StoreNeed::Text;
    if (takesEmptyText(column))
        return edited.none && !edited.touched ? StoreNeed::Nothing : StoreNeed::Text;
    return edited.none ? StoreNeed::Nothing : StoreNeed::NullKey;
}

FieldKey fieldKey(VirtualKey key)
{
    const bool plain = !key.control() && !key.alt();
    switch (key.getKeyboardKey()) {
    case KeyEscape:
        return plain ? FieldKey::GiveUp : FieldKey::Typing;
    case KeyEnter:
        return plain ? FieldKey::Enter : FieldKey::Typing;
    case KeyTab:
        return plain ? FieldKey::Leave : FieldKey::Typing;
    case KeyUp:
    case KeyDown:
    case KeyPageUp:
    case KeyPageDown:
        return key.alt() ? FieldKey::Typing : FieldKey::Leave;
    case KeyInsert:
        return plain && !key.shift() ? FieldKey::Nothing : FieldKey::Typing;
    case Key0:
        if (!key.control() || key.alt())
            return FieldKey::Typing;
        return key.shift() ? FieldKey::Default : FieldKey::Null;
    default:
        return FieldKey::Typing;
    }
}

ViewKey viewKey(VirtualKey key)
{
    const bool plain = !key.control() && !key.alt() && !key.shift();
    const bool control = key.control() && !key.alt();
    switch (key.getKeyboardKey()) {
    case KeyF1 + 1:
    case KeyEnter:
        return plain ? ViewKey::Edit : ViewKey::Other;
    case KeyDown:
        if (key.alt())
            return ViewKey::List;
        return plain && !key.repeated() ? ViewKey::NewRowBelow : ViewKey::Other;
    case Key0:
        if (!control)
            return ViewKey::Other;
        return key.shift() ? ViewKey::Default : ViewKey::Null;
    case KeyInsert:
        if (key.shift())
            return !key.control() && !key.alt() ? ViewKey::Paste : ViewKey::Other;
        return plain ? ViewKey::NewRow : ViewKey::Other;
    case KeyDelete:
        return control && !key.shift() ? ViewKey::DeleteRow : ViewKey::Other;
    case KeyA + 21: // V
        return control && !key.shift() ? ViewKey::Paste : ViewKey::Other;
    case KeyEscape:
        return plain ? ViewKey::GiveUp : ViewKey::Other;
    default:
        return ViewKey::Other;
    }
}

std::wstring firstCell(std::wstring_view text)
{
    const bool table = text.find_first_of(L"\t\r\n") != std::wstring_view::npos;
    if (const auto quoted = table ? quotedCell(text) : std::nullopt)
        return quoted->substr(0, quoted->find_first_of(lineEnds));
    text = text.substr(0, text.find(L'\t'));
    return std::wstring(text.substr(0, text.find_first_of(lineEnds)));
}

std::optional<Rect> fieldRect(const Rect& cell, const Rect& cells, int leastWidth)
{
    const bool seen = cell.left < cells.right && cell.right > cells.left &&
                      cell.top < cells.bottom && cell.bottom > cells.top;
    if (!seen)
        return std::nullopt;
    const int line = 1;
    Rect field{std::max(cell.left - line, cells.left), std::max(cell.top - line, cells.top),
               std::min(cell.right + line, cells.right), cell.bottom + line};
    if (field.width() < leastWidth) {
        field.right = std::min(field.left + leastWidth, cells.right);
        field.left = std::max(std::min(field.left, field.right - leastWidth), cells.left);
    }
    return field;
}

Rect tipRect(const Rect& place, Size size, const Rect& bounds)
{
    const int gap = 2;
    const int below = bounds.bottom - place.bottom;
    const int above = place.top - bounds.top;
    const bool fitsBelow = size.height + gap <= below || below >= above;
    Rect tip;
    tip.left = std::max(std::min(place.left, bounds.right - size.width), bounds.left);
    tip.right = std::min(tip.left + size.width, bounds.right);
    tip.top = fitsBelow ? place.bottom + gap : std::max(place.top - gap - size.height, bounds.top);
    tip.bottom = std::min(tip.top + size.height, fitsBelow ? bounds.bottom : place.top - gap);
    return tip;
}

} // namespace OviAPI
