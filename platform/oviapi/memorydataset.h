// A complete dataset in memory.
#pragma once

#include <initializer_list>
#include <vector>

#include <oviapi/dataset.h>

namespace OviAPI {

// Rows can be read, changed, inserted and deleted like those of a table. A column added while there
// are rows is NULL in them; one taken out takes its values along, and the last one the rows.
class OVIAPI_API aCMemoryDataSet : public aCDataSet {
public:
    long GetRowCount() override;
    short ToRow(short direction, long row, bool follow) override;
    short IntoCol(int column, void* data) override;
    short AddRow(void* data, long position) override;
    short DeleteRow(long row) override;
    short DeleteAllRow() override;

    // Adds a row of texts at the end, converted by the types of the columns; a null pointer and a
    // missing text give NULL. Returns the fault of the first text that is not a value (then no row
    // is added).
    TextFault AppendTexts(std::initializer_list<const wchar_t*> texts);
    TextFault AppendTexts(const std::vector<const wchar_t*>& texts);
    // Adds a row of values at the end, as fast as memory allows.
    void AppendCells(std::span<const RowRecord::Cell> cells);
    void Reserve(long rows);

    // A cell marked by hand, for sources that know more than the value.
    void MarkCell(int column, long row, unsigned stamp, const wchar_t* reason);

protected:
    void ColumnAdded(int column) override;
    void ColumnDeleted(int column) override;

private:
    std::vector<RowRecord> m_rows;
};

} // namespace OviAPI
