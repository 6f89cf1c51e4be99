#include <oviapi/column.h>

#include <algorithm>

#include <oviapi/painter.h>

namespace OviAPI {

namespace {

constexpr uint32_t centred = TextCenter | TextVCenter | TextSingleLine;
constexpr uint32_t onTheLeft = TextLeft | TextVCenter | TextSingleLine;

} // namespace

aCColumn::aCColumn()
    : headerAlign(centred)
    , cellAlign(onTheLeft)
{
}

aCColumn::aCColumn(const wchar_t* columnName, unsigned char type, long valueSize,
                   const wchar_t* title, short startWidth, short leastWidth, int kind)
    : aCColumn()
{
    name = columnName ? columnName : L"";
    caption = title ? title : L"";
    dataType = type;
    size = valueSize;
    width = startWidth;
    minWidth = leastWidth;
    displayKind = kind;
}

aCColumn::~aCColumn() = default;
aCColumn::aCColumn(const aCColumn& other) = default;
aCColumn& aCColumn::operator=(const aCColumn& other) = default;

void aCColumn::DrawHeader(Painter*, int, aCRecordView*) {}

size_t aCColumn::rowBytes() const
{
    const auto count = static_cast<size_t>(std::max(size, 0L));
    return isTextType(dataType) ? count * sizeof(wchar_t) : count;
}

size_t aCColumn::displaySize() const
{
    const auto count = static_cast<size_t>(std::max(size, 0L));
    switch (static_cast<DataType>(dataType)) {
    case DataType::Text:
    case DataType::ExternalFile:
    case DataType::NationalText:
        return count > 0 ? count - 1 : 0;
    case DataType::Int16:
        return 6;
    case DataType::Int32:
        return 11;
    case DataType::Int64:
    case DataType::UInt64:
        return 20;
    case DataType::Float:
        return 15;
    case DataType::Double:
        return 24;
    case DataType::DateTime: {
        // The longest year has a sign and six digits, a fraction six digits and a point.
        const size_t pattern = format.empty() ? defaultDateFormat.size() : format.size();
        return std::max<size_t>(pattern + 10, 9);
    }
    case DataType::Decimal:
        return count;
    case DataType::Bytes:
        return 2 * count;
    case DataType::Boolean:
        return 5;
    case DataType::None:
    case DataType::LargeObject:
        return 0;
    }
    return 0;
}

} // namespace OviAPI
