#include <dorcpp/statement.h>

#include <dorcpp/session.h>
#include <dorcpp/value.h>

namespace DorCPP {

void DorStatement::create(const DorConnect& connection, const char* sql, bool longLived)
{
    m_created = false;
    const std::shared_ptr<Session> session = connection.session();
    m_text = fromClient(sql ? sql : "");
    const Session::Use driver(*session);
    const bool empty = SqlText(m_text, driver->dialect()).count() == 0;
    m_paramCount = empty ? 0 : driver->prepare(m_text, longLived);
    m_created = true;
}

} // namespace DorCPP
