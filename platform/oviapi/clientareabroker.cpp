#include <oviapi/clientareabroker.h>

#include <oviapi/recordview.h>

namespace OviAPI {

aCClientAreaBroker::~aCClientAreaBroker() = default;

void aCClientAreaBroker::SetColAlignment(short mode, short maxChars)
{
    if (m_view)
        m_view->fitColumns(mode, maxChars);
}

} // namespace OviAPI
