// Opening a connection to a server.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include <dorcpp/driver.h>
#include <libpq-fe.h>

namespace DorCPP::Postgresql {

struct Finish {
    void operator()(PGconn* connection) const { PQfinish(connection); }
};
using Connection = std::unique_ptr<PGconn, Finish>;

// What the server said beside its answers: the latest message that ended the connection.
struct LastWords {
    std::string state; // SQLSTATE
    std::string text;
};

// Connects. What the text leaves open comes from its service, the environment and the client's
// password file; then TLS with a checked certificate is asked for where the server is not on this
// machine. Nothing is written to the standard error stream; words gets the server's last message
// and must outlive the connection. Throws DorX (CodeCannotOpen); its texts hold neither the
// password nor the connection text.
Connection openServer(const Target& target, LastWords& words);

// Whether the server that the connection was made to takes connections now. Takes two seconds at
// most.
bool answers(const PGconn* connection);

} // namespace DorCPP::Postgresql
