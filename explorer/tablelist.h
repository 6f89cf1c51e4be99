// The list of the tables and views of a database.
#pragma once

#include <optional>
#include <vector>

#include <oviapi/memorydataset.h>
#include <oviapi/recordview.h>

#include "explorer/databasesession.h"
#include "explorer/tablecounter.h"

// Columns name, kind and number of rows; one line is the current one. The name takes the room that
// the others leave.
class TableList : public OviAPI::aCRecordView {
public:
    enum Column : int { Name = 1, Kind = 2, Rows = 3 };

    TableList();
    ~TableList() override;

    bool create() override;

    // Shows these tables without numbers of rows; the first of them is the current one.
    void setTables(const std::vector<DatabaseTable>& tables);
    // table: from 0.
    void setCount(size_t table, const TableCount& count);
    // Nothing before the count is there, and a question mark for a count that did not succeed.
    std::wstring countText(size_t table);
    // Index from 0; -1 for none.
    int currentTable() const;

    // Gives captions and kinds in the present language.
    void loadTexts();

    bool onVisClientSize() override;
    bool SetFont(OviAPI::Font font, short repaint) override;

private:
    void addTableColumn(const wchar_t* name, long size);
    void fillRow(size_t table);
    void fitColumns();

    std::vector<DatabaseTable> m_tables;
    std::vector<std::optional<TableCount>> m_counts;
    OviAPI::aCMemoryDataSet m_data;
    bool m_fitting = false;
};
