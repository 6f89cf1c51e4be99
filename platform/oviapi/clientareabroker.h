// The measures of a record view's client area.
#pragma once

#include <oviapi/export.h>

namespace OviAPI {

class aCRecordView;

// Serves one view, which owns it. A derived class may be installed in its place to fit widths in
// another way.
class OVIAPI_API aCClientAreaBroker {
public:
    explicit aCClientAreaBroker(aCRecordView* view = nullptr)
        : m_view(view)
    {
    }
    virtual ~aCClientAreaBroker();
    aCClientAreaBroker(const aCClientAreaBroker&) = delete;
    aCClientAreaBroker& operator=(const aCClientAreaBroker&) = delete;

    // What SetColAlignment measures.
    enum AlignMode : short {
        AlignHeaders = 1,
        AlignCells = 2,
        AlignRowHeader = 3,
        AlignAll = 4,
    };

    // Fits the widths of the columns, and of the row header, to what they show on the first page.
    // maxChars: characters of a text that count, 0 for all.
    virtual void SetColAlignment(short mode, short maxChars);

    aCRecordView* GetView() const { return m_view; }
    void SetView(aCRecordView* view) { m_view = view; }

    // Pixels.
    int headerHeight = 0;
    int rowHeight = 0;
    int rowHeaderWidth = 0; // 0 where the view shows no row headers

protected:
    aCRecordView* m_view; // not owned
};

} // namespace OviAPI
