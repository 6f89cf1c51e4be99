// What the driver asks on its own account inside a transaction of the user.
#pragma once

#include <dorcpp/postgresql/statement.h>

namespace DorCPP::Postgresql {

// A failed statement would end the transaction around it. While the object lives the statements
// stand behind a savepoint; unless it was released, what they did is undone and the transaction
// goes on. Outside a transaction it does nothing.
class Savepoint {
public:
    explicit Savepoint(Link& link);
    ~Savepoint();
    Savepoint(const Savepoint&) = delete;
    Savepoint& operator=(const Savepoint&) = delete;
    void release();

private:
    void run(const char* sql);
    Link& m_link;
    bool m_set;
};

} // namespace DorCPP::Postgresql
