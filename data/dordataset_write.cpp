// Writing: values as SQL, edits as statements, large objects.
#include "data/dordataset.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include <dorcpp/charset.h>
#include <oviapi/text.h>

using DorCPP::DorX;
using OviAPI::aCString;
using OviAPI::DataType;
using OviAPI::Phrase;

namespace {

constexpr size_t maxDumpedChars = 32766; // of a text in UTF-16, without its end
// Dates that the client's date text can say: 0001-01-01 to 9999-12-31.
constexpr int firstYear = 1;
constexpr int lastYear = 9999;

std::string narrow(std::wstring_view sql)
{
    return DorCPP::narrow(sql, DorCPP::getStdCharset());
}

[[noreturn]] void refuse(Phrase why)
{
    throw DorX(-1, DorCPP::CodeBadBind, why);
}

bool isDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

size_t skipDigits(std::wstring_view text, size_t at)
{
    while (at < text.size() && isDigit(text[at]))
        ++at;
    return at;
}

// [-] digits [. digits] [e [+-] digits], a digit before or behind the point: what stands in SQL
// without quotes and is nothing but a number. "nan" and "inf" are names there.
bool isNumber(std::wstring_view text)
{
    size_t at = text.starts_with(L'-') ? 1 : 0;
    const size_t whole = skipDigits(text, at);
    size_t digits = whole - at;
    at = whole;
    if (at < text.size() && text[at] == L'.') {
        const size_t end = skipDigits(text, at + 1);
        digits += end - at - 1;
        at = end;
    }
    if (digits == 0)
        return false;
    if (at < text.size() && (text[at] == L'e' || text[at] == L'E')) {
        ++at;
        if (at < text.size() && (text[at] == L'+' || text[at] == L'-'))
            ++at;
        const size_t end = skipDigits(text, at);
        if (end == at)
            return false;
        at = end;
    }
    return at == text.size();
}

bool isHex(std::wstring_view text)
{
    return text.size() % 2 == 0 && std::all_of(text.begin(), text.end(), [](wchar_t c) {
               return isDigit(c) || (c >= L'A' && c <= L'F') || (c >= L'a' && c <= L'f');
           });
}

// Whether the client's text says every character, in a one-byte set of characters as well.
bool isSendable(const std::wstring& text)
{
    if (std::all_of(text.begin(), text.end(), [](wchar_t c) { return c > 0 && c < 0x80; }))
        return true;
    return text.find(L'\0') == std::wstring::npos &&
           DorCPP::widen(narrow(text), DorCPP::getStdCharset()) == text;
}

// The text in UTF-16 as hexadecimal digits, the low byte of a unit first.
std::wstring unicodeDump(const std::wstring& text)
{
    if (text.size() > maxDumpedChars)
        refuse(Phrase::TooLong);
    // A character may need two units.
    std::vector<char16_t> units(2 * text.size() + 1);
    const int count =
        DorCPP::RCHARToUnicode(units.data(), text.c_str(), static_cast<int>(units.size()), true);
    const std::u16string_view written(units.data(), static_cast<size_t>(count));
    if (OviAPI::utf16ToWide(written) != text)
        refuse(Phrase::NotTextOfClient);
    if (written.size() > maxDumpedChars)
        refuse(Phrase::TooLong);
    return OviAPI::DumpToHexText(units.data(), written.size() * sizeof(char16_t));
}

// A date that the text "mm/dd/yyyy:hh:mi:ss.ff" says whole.
void requireDate(std::span<const std::byte> value)
{
    int64_t micros = 0;
    if (value.size() < sizeof micros)
        refuse(Phrase::NotADate);
    std::memcpy(&micros, value.data(), sizeof micros);
    if (micros == OviAPI::dateBeforeAll || micros == OviAPI::dateAfterAll)
        refuse(Phrase::NotADate);
    const int64_t year = OviAPI::splitDateTime(micros).year;
    if (year < firstYear || year > lastYear)
        refuse(Phrase::NotADate);
}

// What stands in SQL as it is must be one literal and nothing else.
void requireLiteral(DataType type, const aCString& text)
{
    switch (type) {
    case DataType::Int32:
    case DataType::Int16:
    case DataType::Int64:
    case DataType::UInt64:
    case DataType::Float:
    case DataType::Double:
    case DataType::Decimal:
        if (!isNumber(text))
            refuse(Phrase::NotANumber);
        break;
    case DataType::Boolean:
        if (text != L"true" && text != L"false")
            refuse(Phrase::NotABoolean);
        break;
    case DataType::Text:
    case DataType::ExternalFile:
    case DataType::DateTime:
        break; // between quotes
    case DataType::NationalText:
    case DataType::Bytes:
    case DataType::LargeObject:
    case DataType::None:
        refuse(Phrase::NotText); // has a literal only by the type of its column in the database
    }
}

} // namespace

// What no cell of the column can be changed for; nothing when there is no such reason.
std::optional<Phrase> xCDorvexDataSet::whyReadOnly(int column) const
{
    const OviAPI::aCColumn* info = GetColInfo(column);
    if (!info || info->readOnly)
        return Phrase::ColumnReadOnly;
    if (!m_writeBack)
        return Phrase::TableReadOnly;
    switch (m_access) {
    case Access::ConnectionReads:
        return Phrase::ConnectionReadOnly;
    case Access::CursorReads:
        return Phrase::CursorReadOnly;
    case Access::NotKeyed:
        return Phrase::RowsNotKeyed;
    case Access::Writable:
        break;
    }
    if (!nameOf(column).isComplete())
        return Phrase::ColumnComputed;
    if (info->dataType == static_cast<unsigned char>(DataType::LargeObject))
        return Phrase::LargeObjectNotEdited;
    return std::nullopt;
}

bool xCDorvexDataSet::IsUpdatable(int column)
{
    return aCDataSet::IsUpdatable(column) && !whyReadOnly(column);
}

aCString xCDorvexDataSet::ReadOnlyReason(int column)
{
    if (!GetColInfo(column))
        throw OviAPI::aCDataFailure(OviAPI::aCDataFailure::IndexOutOfRange);
    const std::optional<Phrase> why = whyReadOnly(column);
    return why ? OviAPI::phrase(*why) : aCDataSet::ReadOnlyReason(column);
}

void xCDorvexDataSet::GetColSQLText(int column, aCString& text) const
{
    const OviAPI::aCColumn* info = GetColInfo(column);
    if (!info)
        throw OviAPI::aCDataFailure(OviAPI::aCDataFailure::IndexOutOfRange);
    switch (static_cast<DataType>(info->dataType)) {
    case DataType::Text:
    case DataType::ExternalFile:
    case DataType::DateTime:
        text = inQuotes(text, L'\'');
        break;
    default:
        break;
    }
}

// A value as the statement takes it. Throws DorX for one that must not be written: cut or not
// valid, or such that the statement would not say it exactly.
aCString xCDorvexDataSet::sqlValue(int column, const void* data, bool forInsert) const
{
    const OviAPI::aCColumn& info = *GetColInfo(column);
    const unsigned stamp = GetDataStamp(column, data);
    if ((stamp & (OviAPI::StampCut | OviAPI::StampInvalid)) != 0)
        refuse((stamp & OviAPI::StampCut) != 0 ? Phrase::ValueCut : Phrase::TextNotValid);
    if (IsDataNull(column, data))
        return L"NULL";
    if (IsDataEmpty(column, data))
        return L"DEFAULT";
    const auto type = static_cast<DataType>(info.dataType);
    const auto value = GetDataBytes(column, data);
    if (type == DataType::DateTime)
        requireDate(value);
    aCString text = OviAPI::valueToText(
        info.dataType, value,
        type == DataType::DateTime ? OviAPI::sqlDateFormat : std::wstring_view(info.format));
    if (OviAPI::isTextType(info.dataType) && text.size() * sizeof(wchar_t) != value.size())
        refuse(Phrase::NotTextOfClient); // a zero stands in it

    const int dbmsType = columnDesc(column).type;
    const bool bytes = dbmsType == DorCPP::TypeByte || dbmsType == DorCPP::TypeVarbyte ||
                       (forInsert && type == DataType::Bytes);
    if (bytes) {
        if (!isHex(text))
            refuse(Phrase::NotHexadecimal);
        return L"Hex('" + text + L"')";
    }
    if (dbmsType == DorCPP::TypeNchar || dbmsType == DorCPP::TypeNvarchar)
        return L"Hex('" + unicodeDump(text) + L"')";
    requireLiteral(type, text);
    if (!isSendable(text))
        refuse(Phrase::NotTextOfClient);
    GetColSQLText(column, text);
    if (dbmsType != DorCPP::TypeExtfile)
        return text;
    if (!text.starts_with(L'\''))
        refuse(Phrase::NotText);
    return L"EXTFILE(" + text + L")";
}

// A column that cannot be named in an insertion is left out as long as it is left to the server.
std::wstring xCDorvexDataSet::insertTextOf(const void* rowData) const
{
    std::wstring names;
    std::wstring values;
    std::set<std::wstring> named;
    for (int i = 1; i <= GetColCount(); ++i) {
        const auto data = ColDataOfRow(i, rowData);
        const TableColumnName name = nameOf(i);
        if (!name.isComplete() || !named.insert(name.column).second) {
            if (!IsDataEmpty(i, data.get()))
                throw DorX(-1, DorCPP::CodeNotUpdatable, Phrase::ColumnComputed);
            continue;
        }
        const wchar_t* const comma = names.empty() ? L"" : L",";
        names.append(comma).append(inQuotes(name.column, L'"'));
        values.append(comma).append(sqlValue(i, data.get(), true));
    }
    if (names.empty())
        throw DorX(-1, DorCPP::CodeNotUpdatable, Phrase::RowsNotKeyed);
    return insertText(tableName(), names, values);
}

// Puts the cursor on the current row, where it is not when the row came from the cache, and makes
// sure that the row is what was shown. False with the error of the row; throws DorX when errors are
// to be raised.
bool xCDorvexDataSet::standForChange(long row)
{
    if (!m_cursor || row == 0)
        return false;
    const bool here = m_cursor->position() == row;
    if (here && (!IsCurrentRowKept() || row == m_blobRow))
        return true;
    if (PutSourceOnRow(row) == 0)
        return true;
    if (RaisesErrors() && GetErrorKind() != NoError)
        throw DorX(m_unraised);
    return false;
}

short xCDorvexDataSet::RefuseStaleRow(long row)
{
    const DorX x(-1, DorCPP::CodeRowChanged, Phrase::DbRowChanged);
    m_unraised = x;
    ErrorHandler(Modifying, x, row);
    return 1;
}

// The row is shown as the database has it now: it may have rounded the value, or changed others.
void xCDorvexDataSet::rowIsStored(long row)
{
    clearRowError(row);
    m_unread.erase(row);
    const bool read = ToRow(OviAPI::FetchAbsolute, row, false) == 0 && GetErrorKind() == NoError;
    if (!read) {
        ClearRowCache();
        RefreshViews();
        return;
    }
    if (IsRowCacheOn() && IsRowCached(row))
        CacheCurrentRow();
    RefreshRowInViews(row);
}

void xCDorvexDataSet::ExecuteChange(DorCPP::DorCursor& cursor, const std::wstring& sql)
{
    cursor.execute(narrow(sql).c_str());
}

short xCDorvexDataSet::IntoCol(int column, void* data)
{
    const OviAPI::aCColumn* info = GetColInfo(column);
    if (!info)
        throw OviAPI::aCDataFailure(OviAPI::aCDataFailure::IndexOutOfRange);
    const long row = GetRow();
    if (IsVirtualRow(row))
        return aCDataSet::IntoCol(column, data);
    if (!m_writeBack)
        return 0;
    if (info->dataType == static_cast<unsigned char>(DataType::LargeObject))
        return 1;
    const TableColumnName name = nameOf(column);
    if (!name.isComplete())
        return 1;
    settleBlob();
    try {
        if (!standForChange(row))
            return 1;
        if ((CellState(column) & (OviAPI::StampCut | OviAPI::StampInvalid)) != 0)
            throw DorX(-1, DorCPP::CodeNotUpdatable, narrow(ReadOnlyReason(column)).c_str());
        ExecuteChange(*m_cursor, updateText(name, sqlValue(column, data, false)));
    } catch (const DorX& x) {
        if (!ErrorHandler(Modifying, x, row))
            throw;
        return 1;
    }
    rowIsStored(row);
    return 0;
}

short xCDorvexDataSet::AddRow(void* data, long position)
{
    if (!m_writeBack)
        return 0;
    if (!data)
        return aCDataSet::AddRow(nullptr, position);
    SetErrorKind(NoError);
    try {
        const std::wstring sql = insertTextOf(data);
        ExecuteChange(*GetDBInsCursor(), sql);
    } catch (const DorX& x) {
        const bool quiet = ErrorHandler(Modifying, x, 0);
        if (IsRowCacheOn())
            ClearRowCache();
        if (quiet)
            return 1;
        ResetDataSet(false);
        throw;
    }
    clearRowError(0);
    ResetDataSet(false);
    return 0;
}

short xCDorvexDataSet::DeleteRow(long row)
{
    if (!m_writeBack || row <= 0 || row > GetRowCount())
        return 0;
    SetErrorKind(NoError);
    if (IsVirtualRow(row))
        return aCDataSet::DeleteRow(row);
    bool stands = false;
    try {
        SetCurrentRow(0); // so that the cursor is put on it anew
        stands = PutSourceOnRow(row) == 0;
        if (!stands && RaisesErrors() && GetErrorKind() != NoError)
            throw DorX(m_unraised);
        if (stands)
            ExecuteChange(*m_cursor, deleteRowText(tableName()));
    } catch (const DorX& x) {
        const bool quiet = ErrorHandler(Modifying, x, row);
        if (IsRowCacheOn())
            ClearRowCache();
        if (!quiet)
            throw;
        stands = false;
    }
    if (!stands) { // what is shown next is what there is
        if (IsRowCacheOn())
            ClearRowCache();
        RefreshViews();
        return 1;
    }
    DeleteRowDef(row);
    if (IsRowCacheOn())
        ClearRowCache();
    ResetDataSet(false);
    RefreshViews();
    return 0;
}

// Kept: also where changes are not written back.
short xCDorvexDataSet::DeleteAllRow()
{
    SetErrorKind(NoError);
    DeleteVirtualRow();
    try {
        DorCPP::DorConnect session; // must still be there
        session.attach(m_channel, false);
        ExecuteChange(*GetDBInsCursor(), deleteAllText(tableName()));
        if (IsRowCacheOn())
            ClearRowCache();
        DeleteAllRowDef();
        SetCurrentRow(0);
        executeAgain();
    } catch (const DorX& x) {
        const bool quiet = ErrorHandler(Modifying, x, 0);
        if (IsRowCacheOn())
            ClearRowCache();
        if (!quiet)
            throw;
        return 1;
    }
    clearRowError(0);
    ResetDataSet(false);
    RefreshViews();
    return 0;
}

short xCDorvexDataSet::ClearBlob(int column)
{
    return changeBlob(column, [&] { m_cursor->clearBlob(column); });
}

short xCDorvexDataSet::AppendBlob(int column, const void* data, size_t size)
{
    return changeBlob(column, [&] { m_cursor->appendBlob(column, data, size); });
}

template<class Change>
short xCDorvexDataSet::changeBlob(int column, Change change)
{
    const long row = GetRow();
    SetErrorKind(NoError);
    if (IsVirtualRow(row))
        return 1;
    try {
        if (!standForChange(row))
            return 1;
        if (column != m_blobColumn)
            settleBlob();
        change();
    } catch (const DorX& x) {
        if (!ErrorHandler(Modifying, x, row))
            throw;
        return 1;
    }
    m_blobRow = row;
    m_blobColumn = column;
    return 0;
}

short xCDorvexDataSet::WriteBlob()
{
    const long row = m_blobRow;
    if (row == 0)
        return 0;
    SetErrorKind(NoError);
    settleBlob();
    const bool written = GetErrorKind() == NoError;
    if (!written && RaisesErrors())
        throw DorX(m_unraised);
    RefreshViews();
    return written ? 0 : 1;
}

// Writes the large object that is being replaced, if any. An error is that of its row.
void xCDorvexDataSet::settleBlob()
{
    const long row = std::exchange(m_blobRow, 0);
    if (row == 0 || !m_cursor)
        return;
    try {
        m_cursor->getBlobLen(m_blobColumn); // whoever reads the value has it written first
        ClearRowCache();
    } catch (const DorX& x) {
        m_unraised = x;
        ErrorHandler(Modifying, x, row);
    }
}
