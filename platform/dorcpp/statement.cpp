#include <dorcpp/statement.h>

#include <dorcpp/answer.h>
#include <dorcpp/session.h>
#include <dorcpp/value.h>

namespace DorCPP {

void DorStatement::create(const DorConnect& connection, const char* sql, bool longLived)
{
    m_created = false;
    const std::shared_ptr<Session> session = connection.session();
    m_text = fromClient(sql ? sql : "");
    const Session::Use driver(*session);
    const SqlText text(m_text, driver->dialect());
    m_paramCount =
        text.count() == 0 ? 0 : driver->prepare(engineText(*session, *driver, text), longLived);
    m_created = true;
}

} // namespace DorCPP
