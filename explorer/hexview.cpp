#include "explorer/hexview.h"

#include <algorithm>
#include <array>
#include <cwchar>
#include <vector>

#include <oviapi/painter.h>
#include <oviapi/text.h>

#include "explorer/databasesession.h"
#include "explorer/textlookup.h"

namespace {

constexpr wchar_t digits[] = L"0123456789ABCDEF";
constexpr int cellPadding = 10;   // px beside the text of a byte
constexpr int longPadding = 16;   // px beside other texts
constexpr int headerPadding = 28; // px beside an offset, with the mark of the current row
constexpr const wchar_t* face = L"monospace"; // what the desktop takes for it

std::wstring hexByte(unsigned char byte)
{
    return {digits[byte >> 4], digits[byte & 15]};
}

wchar_t shown(char byte)
{
    return byte >= ' ' && byte <= '~' ? static_cast<wchar_t>(byte) : L'.';
}

int hexDigit(wchar_t c)
{
    if (c >= L'0' && c <= L'9')
        return c - L'0';
    if (c >= L'a' && c <= L'f')
        return c - L'a' + 10;
    return c >= L'A' && c <= L'F' ? c - L'A' + 10 : -1;
}

std::wstring withoutBlanks(std::wstring_view text)
{
    std::wstring bare(text);
    std::erase_if(bare, [](wchar_t c) { return c == L' ' || c == L'\u00A0' || c == L'\t'; });
    return bare;
}

bool isHex(std::wstring_view bare)
{
    return bare.starts_with(L"0x") || bare.starts_with(L"0X");
}

std::span<const std::byte> bytesOf(const std::wstring& text)
{
    return std::as_bytes(std::span(text.data(), text.size()));
}

} // namespace

// --- the rows

HexData::HexData()
{
    for (int i = 0; i < RowBytes; ++i) {
        const std::wstring name(1, digits[i]);
        AddColDef(new OviAPI::aCColumn( // owned by the dataset
            name.c_str(), static_cast<unsigned char>(OviAPI::DataType::Text), 3, name.c_str(), 0, 0,
            OviAPI::aCColumn::DisplayText));
    }
    AddColDef(new OviAPI::aCColumn( // owned by the dataset
        L"characters", static_cast<unsigned char>(OviAPI::DataType::Text), RowBytes + 1, L"", 0, 0,
        OviAPI::aCColumn::DisplayText));
    for (int column = 1; column <= Characters; ++column) {
        OviAPI::aCColumn& info = *GetColInfo(column);
        info.readOnly = true;
        info.autoAlign = false;
        info.cellAlign = column == Characters ? OviAPI::TextLeft | OviAPI::TextVCenter
                                              : OviAPI::TextCenter | OviAPI::TextVCenter;
    }
}

void HexData::setReader(ValueReader* reader)
{
    m_reader = reader;
    SetCurrentRow(0);
    clearRowErrors();
    RefreshViews();
}

long HexData::GetRowCount()
{
    m_rowCount = m_reader ? (m_reader->size() + RowBytes - 1) / RowBytes : 0;
    return m_rowCount;
}

short HexData::ToRow(short direction, long row, bool)
{
    SetErrorKind(NoError);
    const long last = GetRowCount();
    if (direction == OviAPI::FetchFirst)
        row = 1;
    else if (direction == OviAPI::FetchLast)
        row = last;
    else if (direction != OviAPI::FetchAbsolute)
        row = GetRow() + (direction == OviAPI::FetchNext ? 1 : -1);
    if (row < 1 || row > last)
        return 1;
    std::string bytes;
    try {
        bytes = m_reader->bytes(int64_t{row - 1} * RowBytes, RowBytes);
    } catch (const DorCPP::DorX& x) {
        SetErrorKind(OtherError);
        setRowError(row, x.code(), x.systemCode(), messageOf(x).c_str());
        return 1;
    }
    std::vector<std::wstring> texts(Characters);
    for (size_t i = 0; i < bytes.size(); ++i) {
        texts[i] = hexByte(static_cast<unsigned char>(bytes[i]));
        texts[RowBytes] += shown(bytes[i]);
    }
    std::vector<OviAPI::RowRecord::Cell> cells;
    cells.reserve(texts.size());
    for (const std::wstring& text : texts)
        cells.push_back({bytesOf(text)});
    SetCurrentRow(row);
    m_row = OviAPI::RowRecord(cells);
    UseRecord(&m_row);
    return 0;
}

// --- the view

HexView::HexView()
{
    ShowRowHeaders(true);
}

HexView::~HexView()
{
    SetDataSet(nullptr, false);
}

bool HexView::create()
{
    if (!OviAPI::aCRecordView::create())
        return false;
    loadTexts();
    SetDataSet(&m_data, true);
    fitColumns();
    return true;
}

void HexView::setReader(ValueReader* reader)
{
    m_data.setReader(reader);
    ReShow(0, false, true, true, nullptr);
    if (GetRow() == 0 && m_data.GetRowCount() > 0)
        SetFocusCell(1, 1);
    fitColumns();
}

int64_t HexView::offset() const
{
    if (GetRow() == 0)
        return 0;
    const int column = GetCol();
    const int64_t inRow = column >= 1 && column <= HexData::RowBytes ? column - 1 : 0;
    return int64_t{GetRow() - 1} * HexData::RowBytes + inRow;
}

bool HexView::goTo(int64_t offset)
{
    if (offset < 0 || offset >= m_data.size())
        return false;
    return SetFocusCell(static_cast<int>(offset % HexData::RowBytes) + 1,
                        offset / HexData::RowBytes + 1);
}

void HexView::loadTexts()
{
    m_data.GetColInfo(HexData::Characters)->caption = textOf(TextValueCharacters);
    setAccessibleName(textOf(TextValueHexName).c_str());
    m_data.RefreshViews();
    fitColumns();
}

void HexView::setFont(const OviAPI::Font& font)
{
    constexpr int usualSize = 10;
    OviAPI::aCRecordView::setFont({face, font.size() > 0 ? font.size() : usualSize});
    fitColumns();
}

// Eight digits, and more only where the value needs them.
OviAPI::aCString HexView::GetRowCaption(long row)
{
    constexpr int usualDigits = 8;
    std::array<wchar_t, 20> text{};
    std::swprintf(text.data(), text.size(), L"%0*llX", usualDigits,
                  static_cast<unsigned long long>(row - 1) * HexData::RowBytes);
    return text.data();
}

void HexView::fitColumns()
{
    if (!isCreated() || !GetDataSet())
        return;
    const OviAPI::Font font = GetCellFont(1);
    const int byte = OviAPI::GetTextSize(font, L"00").width + cellPadding;
    const int all = OviAPI::GetTextSize(font, std::wstring(HexData::RowBytes, L'0')).width;
    const int caption =
        OviAPI::GetTextSize(font, m_data.GetColInfo(HexData::Characters)->caption).width;
    const OviAPI::aCString last = GetRowCaption(std::max(1L, m_data.GetRowCount()));
    GetBroker()->rowHeaderWidth = OviAPI::GetTextSize(font, last).width + headerPadding;
    for (int column = 1; column <= HexData::RowBytes; ++column)
        SetColWidth(column, byte);
    SetColWidth(HexData::Characters, std::max(all, caption) + longPadding);
}

// --- what users type

std::optional<int64_t> offsetIn(std::wstring_view text)
{
    const std::wstring bare = withoutBlanks(text);
    const int base = isHex(bare) ? 16 : 10;
    int64_t offset = 0;
    bool any = false;
    for (const wchar_t c : bare.substr(base == 16 ? 2 : 0)) {
        const int digit = hexDigit(c);
        if (digit < 0 || digit >= base || offset > (INT64_MAX - digit) / base)
            return std::nullopt;
        offset = offset * base + digit;
        any = true;
    }
    return any ? std::optional(offset) : std::nullopt;
}

std::optional<std::string> soughtBytes(std::wstring_view text)
{
    const std::wstring bare = withoutBlanks(text);
    if (!isHex(bare))
        return text.empty() ? std::nullopt : std::optional(OviAPI::wideToUtf8(text));
    std::string bytes;
    for (size_t i = 2; i < bare.size(); i += 2) {
        const int high = hexDigit(bare[i]);
        const int low = i + 1 < bare.size() ? hexDigit(bare[i + 1]) : -1;
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes += static_cast<char>(high * 16 + low);
    }
    return bytes.empty() ? std::nullopt : std::optional(bytes);
}
