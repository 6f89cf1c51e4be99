#include <oviapi/recordcopy.h>

#include <algorithm>

#include <oviapi/dataset.h>

namespace OviAPI {

std::wstring RecordCopy::quoted(std::wstring_view cell)
{
    if (cell.empty())
        return L"\"\"";
    if (cell.find_first_of(L"\t\r\n\"") == std::wstring_view::npos)
        return std::wstring(cell);
    std::wstring out = L"\"";
    for (const wchar_t c : cell) {
        if (c == L'"')
            out += c;
        out += c;
    }
    return out + L'"';
}

std::wstring RecordCopy::escaped(std::wstring_view cell)
{
    std::wstring out;
    for (const wchar_t c : cell) {
        if (c == L'&')
            out += L"&amp;";
        else if (c == L'<')
            out += L"&lt;";
        else if (c == L'>')
            out += L"&gt;";
        else if (c == L'"')
            out += L"&quot;";
        else if (c == L'\n')
            out += L"<br>";
        else if (c == L'\t' || (c >= L' ' && c != 0x7F))
            out += c; // other control characters have no place in a page
    }
    return out;
}

RecordCopy RecordCopy::make(aCDataSet& dataSet, const RecordSelection::Range& range, bool captions)
{
    RecordCopy copy;
    if (range.isEmpty())
        return copy;
    const bool single = range.isSingle() && !captions;
    copy.html = L"<meta charset=\"utf-8\"><style>td,th{white-space:pre}</style><table>";
    const auto add = [&](std::wstring_view cell, bool value, int col, const wchar_t* tag) {
        if (col != range.firstCol)
            copy.text += L'\t';
        if (single)
            copy.text += cell;
        else if (value)
            copy.text += quoted(cell);
        copy.html.append(L"<").append(tag).append(L">");
        copy.html.append(escaped(cell)).append(L"</").append(tag).append(L">");
    };
    const auto line = [&](const auto& cells) {
        copy.html += L"<tr>";
        for (int col = range.firstCol; col <= range.lastCol; ++col)
            cells(col);
        copy.html += L"</tr>";
        if (!single)
            copy.text += L'\n';
    };
    if (captions)
        line([&](int col) { add(dataSet.GetColInfo(col)->caption, true, col, L"th"); });
    const int64_t columns = range.lastCol - range.firstCol + 1;
    const int64_t most = std::max<int64_t>(1, maxCells / columns);
    for (int64_t row = range.firstRow; row <= range.lastRow; ++row) {
        if (copy.rows == most || dataSet.SetRow(row) != 0) {
            copy.cut = true;
            break;
        }
        line([&](int col) {
            const bool value = (dataSet.CellState(col) & (StampNull | defaultStamps)) == 0;
            add(dataSet.CellText(col), value, col, L"td");
        });
        ++copy.rows;
    }
    copy.html += L"</table>";
    return copy;
}

} // namespace OviAPI
