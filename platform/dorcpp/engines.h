// The engines that databases can be opened with.
#pragma once

#include <vector>

#include <oviapi/export.h>

namespace DorCPP {

struct Engine {
    // Where its databases are: a file that is named by its path, or a server with a host, a port,
    // users and passwords.
    enum Place : int {
        File = 1,
        Server = 2,
    };

    const char* scheme; // in front of the names of its databases: "sqlite"
    const char* title;  // as its makers write it
    Place place;
};

// Those that this library has a driver for, in the order in which to offer them.
OVIAPI_API const std::vector<Engine>& engines();

} // namespace DorCPP
