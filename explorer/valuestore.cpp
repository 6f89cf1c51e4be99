#include "explorer/valuestore.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include <dorcpp/charset.h>
#include <oviapi/text.h>

#include "explorer/sqltext.h"
#include "explorer/textlookup.h"

namespace {

constexpr size_t printedBytes = 4096; // of each value in the print of a row

struct TypeName {
    int type;
    const wchar_t* name;
};
constexpr TypeName typeNames[] = {
    {DorCPP::TypeChar, L"CHAR"},         {DorCPP::TypeSmallint, L"SMALLINT"},
    {DorCPP::TypeInteger, L"INTEGER"},   {DorCPP::TypeBigint, L"BIGINT"},
    {DorCPP::TypeReal, L"REAL"},         {DorCPP::TypeByte, L"BYTE"},
    {DorCPP::TypeBlob, L"BLOB"},         {DorCPP::TypeDouble, L"DOUBLE"},
    {DorCPP::TypeDate, L"DATE"},         {DorCPP::TypeDecimal, L"DECIMAL"},
    {DorCPP::TypeVarchar, L"VARCHAR"},   {DorCPP::TypeVarbyte, L"VARBYTE"},
    {DorCPP::TypeBoolean, L"BOOLEAN"},   {DorCPP::TypeNchar, L"NCHAR"},
    {DorCPP::TypeNvarchar, L"NVARCHAR"}, {DorCPP::TypeExtfile, L"EXTFILE"},
};

std::wstring nameOfType(int type)
{
    const auto found = std::find_if(std::begin(typeNames), std::end(typeNames),
                                    [type](const TypeName& each) { return each.type == type; });
    return found == std::end(typeNames) ? std::wstring() : found->name;
}

bool isBytesType(int type)
{
    return type == DorCPP::TypeBlob || type == DorCPP::TypeByte || type == DorCPP::TypeVarbyte;
}

bool isTextType(int type)
{
    return type == DorCPP::TypeChar || type == DorCPP::TypeVarchar || type == DorCPP::TypeNchar ||
           type == DorCPP::TypeNvarchar;
}

// FNV-1a.
void addTo(uint64_t& print, std::string_view bytes)
{
    for (const char c : bytes)
        print = (print ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
}

std::wstring nameIn(const char* name, size_t length)
{
    return DorCPP::widen({name, length}, DorCPP::getStdCharset());
}

} // namespace

void ValueStore::write(std::string_view bytes)
{
    write([&bytes] {
        const std::string_view piece = bytes.substr(0, PieceSize);
        bytes.remove_prefix(piece.size());
        return piece;
    });
}

// --- a value of a table

CellValue::CellValue(xCDorvexDataSet& data, const DorCPP::DorConnect& connection, int column,
                     long row)
    : m_data(&data)
    , m_readOnly(connection.info().readOnly)
    , m_column(column)
    , m_row(row)
{
    data.RefreshRow(row); // not as it was when a change was refused
    DorCPP::DorCursor& cursor = seated();
    cursor.answerDesc(column, m_desc);
    m_shown = rowPrint(cursor);
    data.AddViewer(this);
}

CellValue::~CellValue()
{
    if (m_data)
        m_data->RemoveViewer(this);
}

xCDorvexDataSet& CellValue::data() const
{
    if (!m_data || !m_data->GetDBCursor())
        throw DorCPP::DorX(-1, DorCPP::CodeSessionLost, OviAPI::Phrase::DbSessionLost);
    return *m_data;
}

// The cursor on the row, and the dataset as well: what the dataset says of its current row it asks
// the cursor. Views move both between two calls.
DorCPP::DorCursor& CellValue::seated()
{
    xCDorvexDataSet& shown = data();
    DorCPP::DorCursor& cursor = *shown.GetDBCursor();
    if (shown.SetRow(m_row) != 0 || cursor.position() != m_row) {
        shown.ToRow(OviAPI::FetchAbsolute, m_row, false);
        if (shown.GetErrorKind() != xCDorvexDataSet::NoError || cursor.position() != m_row)
            cursor.fetch(DorCPP::FetchAbsolute, m_row);
    }
    return cursor;
}

// Of all values of the row: what of them can be read at no great cost.
uint64_t CellValue::rowPrint(DorCPP::DorCursor& cursor)
{
    uint64_t print = 0xCBF29CE484222325U;
    std::vector<char> start(printedBytes);
    for (int column = 1; column <= cursor.columnCount(); ++column) {
        const std::string kind = cursor.isNull(column) ? "n" : "v";
        addTo(print, kind + std::to_string(cursor.getBlobLen(column)) + ":");
        addTo(print, {start.data(), cursor.getBlob(column, 0, start.data(), start.size())});
    }
    return print;
}

bool CellValue::isTextOrBytes() const
{
    return isBytesType(m_desc.type) || isTextType(m_desc.type);
}

bool CellValue::isNull()
{
    return seated().isNull(m_column);
}

bool CellValue::isText() const
{
    return !isBytesType(m_desc.type);
}

std::wstring CellValue::typeName() const
{
    return nameOfType(m_desc.type);
}

int64_t CellValue::size()
{
    return seated().getBlobLen(m_column);
}

size_t CellValue::read(int64_t offset, void* buffer, size_t size)
{
    return seated().getBlob(m_column, offset, buffer, size);
}

std::wstring CellValue::readOnlyReason()
{
    if (m_readOnly)
        return textOf(TextValueDatabaseReadOnly);
    if (!data().GetDBCursor()->isKeyed())
        return textOf(TextValueNoKey);
    if (m_desc.tableLength == 0)
        return textOf(TextValueComputed);
    if (!isTextOrBytes())
        return textOf(TextValueOtherType);
    return {};
}

DorCPP::DorCursor& CellValue::unchangedRow()
{
    DorCPP::DorCursor& cursor = seated();
    if (rowPrint(cursor) != m_shown)
        throw DorCPP::DorX(-1, DorCPP::CodeRowChanged, OviAPI::Phrase::DbRowChanged);
    return cursor;
}

void CellValue::write(const Pieces& next)
{
    DorCPP::DorCursor& cursor = unchangedRow();
    cursor.clearBlob(m_column);
    try {
        for (std::string_view piece = next(); !piece.empty(); piece = next())
            cursor.appendBlob(m_column, piece.data(), piece.size());
    } catch (...) {
        cursor.giveUpBlob();
        throw;
    }
    stored(cursor); // asking for the value stores it
}

void CellValue::setNull()
{
    DorCPP::DorCursor& cursor = unchangedRow();
    const std::wstring table = tableReference(nameIn(m_desc.owner, m_desc.ownerLength),
                                              nameIn(m_desc.table, m_desc.tableLength));
    const std::wstring sql = setNullText(table, nameIn(m_desc.column, m_desc.columnLength));
    cursor.execute(DorCPP::narrow(sql, DorCPP::getStdCharset()).c_str());
    stored(cursor);
}

void CellValue::stored(DorCPP::DorCursor& cursor)
{
    m_shown = rowPrint(cursor);
    m_data->ClearRowCache();
    m_data->RefreshViews();
}

// --- what a cell shows

ShownValue::ShownValue(std::wstring_view text, bool isNull, std::wstring typeName)
    : m_bytes(OviAPI::wideToUtf8(text))
    , m_typeName(std::move(typeName))
    , m_null(isNull)
{
}

size_t ShownValue::read(int64_t offset, void* buffer, size_t size)
{
    if (offset < 0 || offset >= this->size())
        return 0;
    const std::string_view piece =
        std::string_view(m_bytes).substr(static_cast<size_t>(offset), size);
    std::memcpy(buffer, piece.data(), piece.size());
    return piece.size();
}

std::wstring ShownValue::readOnlyReason()
{
    return textOf(TextValueOtherType);
}

void ShownValue::write(const Pieces&)
{
    throw DorCPP::DorX(-1, DorCPP::CodeNotUpdatable, OviAPI::Phrase::DbNotUpdatable);
}

void ShownValue::setNull()
{
    throw DorCPP::DorX(-1, DorCPP::CodeNotUpdatable, OviAPI::Phrase::DbNotUpdatable);
}

std::unique_ptr<ValueStore> valueOf(xCDorvexDataSet& data, const DorCPP::DorConnect& connection,
                                    int column, long row)
{
    auto value = std::make_unique<CellValue>(data, connection, column, row);
    const bool isExact = (data.CellState(column) & (OviAPI::StampCut | OviAPI::StampInvalid)) == 0;
    if (value->isTextOrBytes() || !isExact)
        return value;
    return std::make_unique<ShownValue>(data.CellText(column), data.IsNull(column),
                                        value->typeName());
}
