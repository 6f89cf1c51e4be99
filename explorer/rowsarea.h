// The rows of the chosen table and, below them, the rows that refer to the one with the focus.
#pragma once

#include <memory>
#include <vector>

#include "app/extpanel.h"
#include "explorer/detailpane.h"
#include "explorer/foreignkeys.h"
#include "explorer/splitterbar.h"
#include "explorer/tablepane.h"

// Details stand level under level: each shows rows that refer to the row with the focus in the pane
// above it. Points to what it is given until clear.
class RowsArea : public WExtPanel {
public:
    static constexpr size_t MostLevels = 3; // below the table

    explicit RowsArea(TypicalConfirm& deleteRow);
    ~RowsArea() override;

    bool create() override;

    // As of the panes. number: of the level, 0 for the table.
    virtual bool onPlaceChanged();
    virtual bool onRowsChanged(size_t number);
    virtual bool onShowValue();

    void showTable(const DorCPP::DorConnect& connection, const DatabaseTable& table);
    // The keys of the connection have been read, or have been forgotten.
    void keysChanged();
    ForeignKeys& keys() { return m_keys; }
    // Lets go of the connection.
    void clear(TextId heading, TextId hint);
    // See RowsPane::leave; from the lowest level up.
    bool leave();
    bool isBusy() const;
    void cancel();

    // Adds a level below the last one, in the font of this panel, and takes the last one away;
    // false when that cannot be.
    bool addLevel();
    bool removeLevel();
    size_t levels() const { return m_levels.size(); }
    TablePane& table() { return m_table; }
    DetailPane& detail(size_t number) { return m_levels[number - 1]->pane; }
    RowsPane& rowsOf(size_t number);
    DatabaseTable tableOf(size_t number);
    // The level with the focus, or that had it last.
    size_t current();
    RowsPane& currentRows() { return rowsOf(current()); }
    SplitterBar& splitter(size_t number) { return m_levels[number - 1]->bar; }

    void loadTexts();

    bool onSize() override;

private:
    struct Level {
        Level(RowsPane& master, TypicalConfirm& deleteRow)
            : bar(SplitterBar::Direction::Level)
            , pane(master, deleteRow)
        {
        }
        SplitterBar bar;
        DetailPane pane;
    };

    void watch(RowsPane& pane, size_t number);
    void placeChanged(size_t number);
    void connectLevel(size_t number);
    void split(size_t number, int place);
    int paneHeight(size_t number) const;
    OviAPI::WVisualObject& paneAt(size_t number);
    void layOut();

    TypicalConfirm& m_deleteRow;
    const DorCPP::DorConnect* m_connection = nullptr;
    ForeignKeys m_keys;
    TablePane m_table;
    std::vector<std::unique_ptr<Level>> m_levels;
    std::vector<double> m_shares{1.0}; // of the height, the table's first
    size_t m_current = 0;
};

OVIAPI_SIGNAL(RowsArea, onPlaceChanged);
OVIAPI_SIGNAL(RowsArea, onRowsChanged);
OVIAPI_SIGNAL(RowsArea, onShowValue);
