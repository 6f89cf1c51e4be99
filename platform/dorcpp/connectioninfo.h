// What a connection tells of itself.
#pragma once

#include <string>

namespace DorCPP {

// What a connection is connected to, in UTF-8. Holds no password.
struct ConnectionInfo {
    std::string engine;   // as its makers write it
    std::string version;  // of the engine or server
    std::string host;     // of a server, else empty
    std::string database; // the file's path, or the server's name of it; empty: in memory
    std::string user;     // of a server
    std::string cipher;   // TLS version and cipher of an encrypted connection, else empty
    bool readOnly = false;
};

} // namespace DorCPP
