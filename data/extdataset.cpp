#include "data/extdataset.h"

#include <algorithm>
#include <vector>

using OviAPI::aCColumn;
using OviAPI::DataType;
using OviAPI::TextFault;

xDataSource::~xDataSource() = default;

unsigned char WExtDataSet::DataTypeOfKind(int kind)
{
    switch (kind) {
    case xDataSource::Integer:
        return static_cast<unsigned char>(DataType::Int32);
    case xDataSource::LargeInteger:
        return static_cast<unsigned char>(DataType::Int64);
    case xDataSource::String:
    case xDataSource::Memo:
        return static_cast<unsigned char>(DataType::Text);
    case xDataSource::ShortInteger:
        return static_cast<unsigned char>(DataType::Int16);
    case xDataSource::Blob:
        return static_cast<unsigned char>(DataType::LargeObject);
    case xDataSource::Double:
        return static_cast<unsigned char>(DataType::Double);
    case xDataSource::Float:
        return static_cast<unsigned char>(DataType::Float);
    case xDataSource::File:
        return static_cast<unsigned char>(DataType::ExternalFile);
    case xDataSource::Moment:
        return static_cast<unsigned char>(DataType::DateTime);
    default:
        return static_cast<unsigned char>(DataType::None);
    }
}

void WExtDataSet::InitByDataSource(xDataSource* source)
{
    DeleteAllRow();
    DeleteAllColDef();
    m_source = source;
    const int count = source ? source->FieldCount() : 0;
    for (int field = 1; field <= count; ++field) {
        auto column = std::make_unique<aCColumn>();
        column->name = column->caption = source->FieldName(field);
        column->dataType = DataTypeOfKind(source->GetFieldKind(field));
        const auto fixed = static_cast<long>(OviAPI::fixedValueSize(column->dataType));
        const long given = std::max(source->FieldSize(field), 0L);
        const long terminator = OviAPI::isTextType(column->dataType) ? 1 : 0;
        column->size = fixed != 0 ? fixed : given + terminator;
        AddColDef(column.release(), 0); // the dataset owns it
    }
}

long WExtDataSet::GetData()
{
    if (!m_source)
        throw OviAPI::aCDataFailure(OviAPI::aCDataFailure::NoCursor);
    DeleteAllRow();
    const auto count = static_cast<size_t>(GetColCount());
    m_source->Rewind();
    while (m_source->Next()) {
        std::vector<std::vector<std::byte>> values(count); // the cells point to them
        std::vector<std::wstring> reasons(count);
        std::vector<OviAPI::RowRecord::Cell> cells(count, {{}, OviAPI::StampNull});
        for (size_t i = 0; i < count; ++i) {
            const int field = static_cast<int>(i) + 1;
            const std::optional<std::wstring> text = m_source->FieldText(field);
            if (!text)
                continue;
            const aCColumn& column = *GetColInfo(field);
            const TextFault fault = OviAPI::textToValue(column.dataType, *text, column.rowBytes(),
                                                        column.format, values[i]);
            if (fault == TextFault::None) {
                cells[i] = {values[i], 0};
                continue;
            }
            reasons[i] = OviAPI::faultText(fault);
            cells[i] = {{}, OviAPI::StampNull | OviAPI::StampInvalid, reasons[i]};
        }
        AppendCells(cells);
    }
    RefreshViews();
    return GetRowCount();
}
