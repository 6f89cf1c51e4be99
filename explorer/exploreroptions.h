// What the explorer remembers between runs.
#pragma once

#include "app/typicaloptions.h"
#include "explorer/connection.h"

// Adds the explorer's own settings to the usual ones; each has a fallback of its own.
class ExplorerOptions : public TypicalOptions {
public:
    static constexpr int32_t DefaultSplitter = 260; // px
    static constexpr int32_t MinSplitter = 80;
    static constexpr int32_t MaxSplitter = 4000;

    ExplorerOptions() = default;

    void serialize(XMLUtils::XMLElementA& element, XMLUtils::XMLEncoding encoding) const override;
    void deserialize(const XMLUtils::XMLElementA& element, XMLUtils::XMLEncoding encoding) override;
    void initDefaults() override;
    // Room for a list of tables and a table beside it.
    void initDefaultMainFormRect() override;

    bool operator==(const ExplorerOptions& other) const;

    WCharString LastDatabase;           // as it was opened; empty: the sample
    int32_t Splitter = DefaultSplitter; // width of the list of tables, px
    OviAPI::Size ValueView;             // of the value dialog, px; 0, 0: the usual one
    bool ToolBar = true;                // whether it is shown
    OviAPI::Font FontGrid;              // of the record views
    RecentConnections Connections;
    TypicalConfirm RemoveConnection; // whether to take a connection off the list
    TypicalConfirm DeleteRow;        // whether to delete a row of a table
};
