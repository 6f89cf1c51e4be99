// Reading: the layout of the row buffer, the current row and its large objects.
#include "data/dordataset.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <string_view>

#include <dorcpp/charset.h>
#include <oviapi/assertion.h>
#include <oviapi/phrases.h>

using DorCPP::DorX;
using DorCPP::ValueState;
using OviAPI::aCString;
using OviAPI::Phrase;

namespace {

constexpr size_t scratchSize = 65535;   // bytes
constexpr long externalFileSize = 2088; // bytes in the row buffer
constexpr size_t reasonChars = 200;     // characters of a stored value in a reason

// Widens the leading ASCII characters of a text, eight at a time, and returns their number. The
// target need not be aligned.
size_t widenAscii(std::byte* to, const char* from, size_t length)
{
    constexpr uint64_t highBits = 0x8080808080808080U;
    size_t at = 0;
    for (uint64_t word = 0; at + sizeof word <= length; at += sizeof word) {
        std::memcpy(&word, from + at, sizeof word);
        if ((word & highBits) != 0)
            break;
        wchar_t wide[sizeof word];
        for (size_t i = 0; i < sizeof word; ++i)
            wide[i] = from[at + i];
        std::memcpy(to + at * sizeof(wchar_t), wide, sizeof wide);
    }
    for (; at < length && static_cast<unsigned char>(from[at]) < 0x80; ++at) {
        const wchar_t c = from[at];
        std::memcpy(to + at * sizeof c, &c, sizeof c);
    }
    return at;
}

// Text of the database client as wide text, at most capacity characters. Returns their
// number.
size_t widen(std::byte* to, size_t capacity, std::string_view text)
{
    const size_t ascii = widenAscii(to, text.data(), std::min(text.size(), capacity));
    if (ascii == text.size() || ascii == capacity)
        return ascii;
    const std::wstring rest = DorCPP::widen(text.substr(ascii), DorCPP::getStdCharset());
    const size_t count = std::min(rest.size(), capacity - ascii);
    std::memcpy(to + ascii * sizeof(wchar_t), rest.data(), count * sizeof(wchar_t));
    return ascii + count;
}

// Characters of a text in UTF-16; a half of a pair alone counts as one.
size_t countCharacters(const char* text, size_t bytes)
{
    size_t count = 0;
    bool first = false;
    for (size_t at = 0; at + sizeof(char16_t) <= bytes; at += sizeof(char16_t)) {
        char16_t unit = 0;
        std::memcpy(&unit, text + at, sizeof unit);
        const bool second = first && (unit & 0xFC00) == 0xDC00;
        first = !second && (unit & 0xFC00) == 0xD800;
        count += second ? 0 : 1;
    }
    return count;
}

} // namespace

long xCDorvexDataSet::GetDataLenFromType(unsigned char type, long length)
{
    constexpr long wide = sizeof(wchar_t);
    switch (type) {
    case DorCPP::TypeChar:
    case DorCPP::TypeVarchar:
        return length * wide + wide;
    case DorCPP::TypeNchar:
    case DorCPP::TypeNvarchar:
        return length / 2 * wide + wide;
    case DorCPP::TypeExtfile:
        return externalFileSize;
    default:
        return length;
    }
}

int xCDorvexDataSet::ConvertDirection(short direction)
{
    switch (direction) {
    case OviAPI::FetchFirst:
        return DorCPP::FetchFirst;
    case OviAPI::FetchLast:
        return DorCPP::FetchLast;
    case OviAPI::FetchNext:
        return DorCPP::FetchNext;
    case OviAPI::FetchPrevious:
        return DorCPP::FetchPrevious;
    case OviAPI::FetchAbsolute:
        return DorCPP::FetchAbsolute;
    default:
        return 0;
    }
}

int64_t xCDorvexDataSet::GetRowBufferLength(DorCPP::DorCursor* cursor)
{
    if (!cursor)
        return 0;
    if (m_rowLength < 0)
        m_rowLength = m_slots.empty() ? 0 : m_slots.back().offset + m_slots.back().size;
    return m_rowLength;
}

const void* xCDorvexDataSet::GetRowData()
{
    if (const void* record = aCDataSet::GetRowData()) // a cached row, or the new one
        return record;
    if (!m_cursor)
        return nullptr;
    // Columns that the application made may be larger than those of the answer.
    const auto columns = static_cast<int64_t>(GetRowLength());
    if (columns > m_rowBufferSize)
        makeRoom(columns);
    return m_rowBuffer.get();
}

// Places the columns one after the other and chooses how each is read.
void xCDorvexDataSet::layOut()
{
    m_slots.clear();
    int64_t offset = 0;
    for (int i = 1; i <= m_described; ++i) {
        const t_ParamDesc& desc = columnDesc(i);
        Slot slot;
        slot.offset = offset;
        slot.size = GetDataLenFromType(desc.type, desc.length);
        slot.type = desc.type;
        slot.length = desc.length;
        switch (desc.type) {
        case DorCPP::TypeChar:
        case DorCPP::TypeVarchar:
        case DorCPP::TypeText:
        case DorCPP::TypeExtfile:
            slot.way = Slot::Text;
            break;
        case DorCPP::TypeNchar:
        case DorCPP::TypeNvarchar:
            slot.way = Slot::NationalText;
            break;
        case DorCPP::TypeBlob:
            slot.way = Slot::Skipped;
            break;
        case DorCPP::TypeVarbyte:
            slot.way = Slot::Bytes;
            break;
        default:
            slot.way = Slot::OwnForm;
        }
        offset += slot.size;
        m_slots.push_back(slot);
    }
}

// Makes the row buffer at least this long and keeps the row that is in it.
void xCDorvexDataSet::makeRoom(int64_t length)
{
    if (m_rowBuffer && length <= m_rowBufferSize)
        return;
    std::unique_ptr<std::byte[], Free> larger;
    if (length <= INT_MAX) {
        const auto bytes = static_cast<size_t>(std::max<int64_t>(length, 1));
        larger.reset(static_cast<std::byte*>(calloc(bytes, 1)));
    }
    if (!larger)
        throw DorX(-1, DorCPP::CodeTooBig, Phrase::RowTooLong);
    for (const Slot& slot : m_slots) {
        if (slot.used != 0)
            std::memcpy(larger.get() + slot.offset, m_rowBuffer.get() + slot.offset, slot.used);
    }
    m_rowBuffer = std::move(larger);
    m_rowBufferSize = static_cast<int>(length);
}

// Zeroes what the row before has written: a row buffer may be far larger than its values.
void xCDorvexDataSet::clearRow()
{
    for (Slot& slot : m_slots) {
        if (slot.used != 0)
            std::memset(m_rowBuffer.get() + slot.offset, 0, slot.used);
        slot.used = slot.valueLength = 0;
        slot.state = ValueState::Null;
        slot.stored.clear();
    }
}

// Fetches a row into the row buffer by the function, which returns its number.
template<class Fetch>
short xCDorvexDataSet::readInto(long row, Fetch fetch)
{
    if (!m_cursor || m_described <= 0)
        return 0;
    settleBlob();
    SetErrorKind(NoError);
    try {
        makeRoom(GetRowBufferLength(m_cursor));
        clearRow();
        const int64_t reached = fetch();
        readRow();
        SetCurrentRow(reached);
        errorIsOver(reached);
    } catch (const DorX& x) {
        if (m_rowBuffer)
            clearRow();
        m_unraised = x;
        return ErrorHandler(Fetching, x, row) ? 1 : 0;
    }
    return 0;
}

short xCDorvexDataSet::ToRow(short direction, long row, bool)
{
    SetErrorKind(NoError);
    return readInto(row, [&] {
        int64_t reached = 0;
        m_cursor->fetch(ConvertDirection(direction), row, &reached, nullptr);
        return reached;
    });
}

short xCDorvexDataSet::ToRowAnew(long row)
{
    return readInto(row, [&] {
        m_cursor->fetchAnew(row);
        return row;
    });
}

void xCDorvexDataSet::readRow()
{
    if (!m_scratch) // a zero unit stands behind it
        m_scratch = std::make_unique<char[]>(scratchSize + sizeof(char16_t));
    int column = 0;
    for (Slot& slot : m_slots) {
        ++column;
        if (slot.offset + slot.size > m_rowBufferSize) {
            OviAPI::assertionFailed(
                "size + colSize <= RowLength", "dordataset", 547,
                "virtual short int xCDorvexDataSet::ToRow(short int, long int, bool)");
        }
        switch (slot.way) {
        case Slot::Skipped: // Kept: a large object takes its space and is read in pieces only
            break;
        case Slot::Text:
            readText(column, slot);
            break;
        case Slot::NationalText:
            readNationalText(column, slot);
            break;
        case Slot::Bytes:
            readBinary(column, slot, DorCPP::TypeByte);
            break;
        case Slot::OwnForm:
            readBinary(column, slot, slot.type);
            break;
        }
        if (slot.state == ValueState::Mismatch)
            slot.stored = storedText(column);
    }
}

void xCDorvexDataSet::readText(int column, Slot& slot)
{
    const size_t characters = static_cast<size_t>(slot.size) / sizeof(wchar_t);
    const size_t capacity = std::min(characters, scratchSize);
    if (capacity == 0)
        return;
    size_t length = 0;
    slot.state =
        m_cursor->getData(column, DorCPP::TypeText, m_scratch.get(), capacity, nullptr, &length);
    std::byte* to = m_rowBuffer.get() + slot.offset;
    const size_t count = widen(to, characters - 1, {m_scratch.get(), length});
    slot.used = count * sizeof(wchar_t);
    if (slot.type == DorCPP::TypeExtfile)
        DorCPP::ConvertExtfileRCHAR(to);
}

void xCDorvexDataSet::readNationalText(int column, Slot& slot)
{
    const size_t characters = static_cast<size_t>(slot.size) / sizeof(wchar_t);
    size_t length = 0;
    slot.state = m_cursor->getData(column, DorCPP::TypeNchar, m_scratch.get(), scratchSize, nullptr,
                                   &length);
    const int count = DorCPP::UnicodeToRCHAR(m_rowBuffer.get() + slot.offset, m_scratch.get(),
                                             static_cast<int>(characters), true);
    slot.used = static_cast<size_t>(count) * sizeof(wchar_t);
    // The value fits into the scratch buffer, but not into its column.
    if (slot.state == ValueState::Exact &&
        countCharacters(m_scratch.get(), length) > static_cast<size_t>(count))
        slot.state = ValueState::Cut;
}

// The own forms of the client are those of the framework: see dorcpp/types.h, oviapi/celltext.h.
void xCDorvexDataSet::readBinary(int column, Slot& slot, int clientType)
{
    if (slot.length == 0)
        return;
    slot.used = slot.length; // in case the call fails halfway
    slot.state = m_cursor->getData(column, clientType, m_rowBuffer.get() + slot.offset, slot.length,
                                   nullptr, &slot.valueLength);
    slot.valueLength = std::min<size_t>(slot.valueLength, slot.length);
    slot.used = slot.valueLength; // the rest is zero
}

const xCDorvexDataSet::Slot* xCDorvexDataSet::slotOf(int column) const
{
    if (column < 1 || static_cast<size_t>(column) > m_slots.size())
        return nullptr;
    return &m_slots[static_cast<size_t>(column) - 1];
}

unsigned xCDorvexDataSet::ColumnState(int column)
{
    const Slot* slot = slotOf(column);
    if (!slot)
        return 0;
    switch (slot->state) {
    case ValueState::Cut:
        return OviAPI::StampCut;
    case ValueState::BadText:
    case ValueState::Mismatch:
        return OviAPI::StampInvalid;
    case ValueState::Exact:
    case ValueState::Null:
        break;
    }
    return 0;
}

aCString xCDorvexDataSet::ColumnReason(int column)
{
    const Slot* slot = slotOf(column);
    if (!slot)
        return {};
    switch (slot->state) {
    case ValueState::Cut:
        return OviAPI::phrase(Phrase::ValueCut);
    case ValueState::BadText:
        return OviAPI::phrase(Phrase::TextNotValid);
    case ValueState::Mismatch:
        return OviAPI::phrase(Phrase::TypeMismatch, slot->stored.substr(0, reasonChars));
    case ValueState::Exact:
    case ValueState::Null:
        break;
    }
    return {};
}

bool xCDorvexDataSet::ColumnText(int column, aCString& text)
{
    const Slot* slot = slotOf(column);
    if (!slot || slot->state != ValueState::Mismatch || slot->way != Slot::OwnForm)
        return false;
    text = slot->stored;
    return true;
}

// The value of the row that has just been fetched, in the text form of the database client.
aCString xCDorvexDataSet::storedText(int column)
{
    size_t length = 0;
    m_cursor->getData(column, DorCPP::TypeText, m_scratch.get(), scratchSize, nullptr, &length);
    return DorCPP::widen({m_scratch.get(), length}, DorCPP::getStdCharset());
}

long xCDorvexDataSet::ColumnDataLen(int column)
{
    const Slot* slot = slotOf(column);
    return slot ? static_cast<long>(slot->valueLength) : -1;
}

double xCDorvexDataSet::GetCellNumber(int column, long row, short* state)
{
    short none = 0;
    double number = aCDataSet::GetCellNumber(column, row, &none);
    if (none == 0 && (CellState(column) & OviAPI::StampInvalid) != 0) { // zeros stand for it
        number = 0.0;
        none = 1;
    }
    const bool decimal =
        GetColInfo(column)->dataType == static_cast<unsigned char>(OviAPI::DataType::Decimal);
    if (none == 0 && m_decimalNumbers && decimal) {
        const auto bytes = CellBytes(column);
        number = DorCPP::DecToDbl(bytes.data(), bytes.size());
    }
    if (state)
        *state = none;
    return number;
}

bool xCDorvexDataSet::IsColumnNull(int column)
{
    if (m_blobRow != 0 && column == m_blobColumn)
        settleBlob();
    int32_t null = 1; // where there is no row there is no value
    if (m_cursor)
        DORVEX_GetCursorOption(m_cursor->handle(), DorCPP::CursorOptionNull, column, &null,
                               sizeof null);
    return null != 0;
}

int xCDorvexDataSet::GetBlobType(int column)
{
    const OviAPI::aCColumn* info = GetColInfo(column);
    if (info && IsVirtualRow(GetRow()))
        return info->blobType;
    int32_t type = 0;
    if (m_cursor)
        DORVEX_GetCursorOption(m_cursor->handle(), DorCPP::CursorOptionBlobType, column, &type,
                               sizeof type);
    return type;
}

int64_t xCDorvexDataSet::GetBlobSize(int column)
{
    const OviAPI::aCColumn* info = GetColInfo(column);
    if (info && IsVirtualRow(GetRow()))
        return info->blobSize;
    return GetFisicalBlobSize(column);
}

int64_t xCDorvexDataSet::GetFisicalBlobSize(int column)
{
    try {
        return standOnCurrentRow() ? m_cursor->getBlobLen(column) : 0;
    } catch (const DorX& x) {
        if (!ErrorHandler(Fetching, x, GetRow()))
            throw;
    }
    return 0;
}

size_t xCDorvexDataSet::GetBlob(int column, int64_t offset, void* buffer, size_t size)
{
    try {
        return standOnCurrentRow() ? m_cursor->getBlob(column, offset, buffer, size) : 0;
    } catch (const DorX& x) {
        if (!ErrorHandler(Fetching, x, GetRow()))
            throw;
    }
    return 0;
}

// Moves the cursor to the current row, where it is not when the row came from the cache. False when
// there is no such row.
bool xCDorvexDataSet::standOnCurrentRow()
{
    const long row = GetRow();
    SetErrorKind(NoError);
    if (!m_cursor || row == 0 || IsVirtualRow(row))
        return false;
    if (m_cursor->position() == row)
        return true;
    return ToRow(OviAPI::FetchAbsolute, row, false) == 0 && GetErrorKind() == NoError;
}
