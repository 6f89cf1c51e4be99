// The rows that belong to the current row of another dataset.
#pragma once

#include <list>
#include <memory>
#include <string>

#include <oviapi/recordview.h>
#include <oviapi/vectorof.h>

#include "app/export.h"
#include "data/dordataset.h"

// The detail of a master: a SELECT with parameters that are taken from a row of the master. The
// query is executed again whenever the row with the focus changes in the master's record view, so
// that a second view always shows what belongs to that row. A value that the master does not have
// yet (of a new row) is passed as NULL.
//
// Points to the master dataset and to the view. When either goes, the detail keeps its rows;
// without a master dataset the query is executed without parameters.
class OVIEXT_API xCSlaveDataSet : public xCDorvexDataSet {
public:
    // What has become of the latest refresh.
    enum LinkState : int {
        LinkFine = 0,
        LinkMismatch =
            1,          // refused: the statement has more or fewer parameters than there are links
        LinkFailed = 2, // an error of the database, when the focus moved
    };

    xCSlaveDataSet();
    ~xCSlaveDataSet() override;

    // One more parameter, by its number from 1, and the master's column that it takes.
    void AddLink(int masterColumn, int parameter);
    // Whose row gives the values; null for none.
    void SetMasterDataSet(OviAPI::aCDataSet* master);
    // The view whose focus the detail follows from now on, null for none.
    void SetMasterGrid(OviAPI::aCRecordView* view);

    // Executes the query for master row 1, or for the row that had the focus last. With autoColumns
    // the columns are made by AutoCreateColumns. The text is cut to as many bytes as it has
    // characters. Throws DorX, and aCDataFailure (NoCursor) when columns are to be made of nothing.
    void Open(int channel, const wchar_t* sql, int mode, bool autoColumns) override;
    // Executes the query for the current master row. When the number of parameters is not that of
    // the links, nothing is executed and the rows stay. Throws DorX. A derived class may execute it
    // elsewhere: see the protected functions.
    virtual void updateCursor();
    // The focus of the master's view has come to this row. An error of the database is told by the
    // link state alone. Returns 0.
    OviAPI::SlotResult onGridRowGetFocus(OviAPI::Object* sender, long previous, long row);

    int GetLinkState() const { return m_linkState; }
    long GetMasterRow() const { return m_masterRow; }

protected:
    static constexpr int linkedMode = 1024; // of the cursor, when the query has parameters

    // What the parameters get. The binds point to the texts.
    struct MasterValues {
        std::list<std::string> texts;
        DorCPP::BindMap binds;
    };

    // Whether there is a row of the master whose values the links take.
    bool hasMasterRow() const;
    // Makes the parameterised statement, once for all master rows, again only when the query has
    // another text. False, with the link state, when it has not as many parameters as there are
    // links. Throws DorX.
    bool prepareLinks();
    MasterValues readMasterValues();
    // From now on the query is the parameterised statement with these values: it is executed so
    // again, after an insertion for example.
    void keepMasterValues(MasterValues values);

    // With the values of the master. Throws DorX: CodeBadBind for a wrong number of parameters.
    std::unique_ptr<DorCPP::DorCursor> executedCursor() override;

    struct Link {
        int masterColumn = 0;
        int parameter = 0;

        bool operator==(const Link&) const = default;
    };

    VectorOf<Link> m_links{50, 50};
    OviAPI::aCDataSet* m_master = nullptr;
    OviAPI::aCRecordView* m_masterView = nullptr;
    long m_masterRow = 1;
    bool m_prepared = false;
    int m_mode = 0; // for the query without parameters
    DorCPP::DorStatement m_parameterised;
    int m_linkState = LinkFine;

private:
    class MasterWatch;

    std::unique_ptr<DorCPP::DorCursor> plainCursor();
    std::unique_ptr<DorCPP::DorCursor> linkedCursor();

    std::unique_ptr<MasterWatch> m_masterWatch;
    std::unique_ptr<OviAPI::Object> m_follower; // receives the signal of the view that is followed
    std::string m_preparedQuery;
    MasterValues m_values; // of the rows that there are
};
