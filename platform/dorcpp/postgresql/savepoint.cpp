#include <dorcpp/postgresql/savepoint.h>

#include <dorcpp/dorx.h>

namespace DorCPP::Postgresql {

Savepoint::Savepoint(Link& link)
    : m_link(link)
    , m_set(link.transaction() == PQTRANS_INTRANS)
{
    if (m_set)
        run("SAVEPOINT dorcpp_look");
}

Savepoint::~Savepoint()
{
    if (!m_set || !m_link.isInTransaction())
        return;
    try {
        run("ROLLBACK TO SAVEPOINT dorcpp_look");
        run("RELEASE SAVEPOINT dorcpp_look");
    } catch (const DorX&) {
        // The connection is lost or the statement cancelled; the error on its way says so.
    }
}

void Savepoint::release()
{
    if (m_set)
        run("RELEASE SAVEPOINT dorcpp_look");
    m_set = false;
}

void Savepoint::run(const char* sql)
{
    m_link.send(sql, Values(), false);
    m_link.take();
}

} // namespace DorCPP::Postgresql
