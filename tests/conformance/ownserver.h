// A server that a test has for itself, to end it, halt it or cut it off.
#pragma once

#include <map>
#include <string>

#include <sys/types.h>

#include <dorcpp/connect.h>

#include "../platform/dorcpp/support.h"

namespace Conformance {

// Runs without TLS from the constructor to the destructor.
class OwnServer {
public:
    OwnServer();
    ~OwnServer();
    OwnServer(const OwnServer&) = delete;
    OwnServer& operator=(const OwnServer&) = delete;

    // Takes an action of the script that makes the server.
    void run(const std::string& action) const;
    // Connects to a host of this machine, with more keywords of the client library.
    void open(DorCPP::DorConnect& connection, const std::string& more = "") const;
    const std::string& at(const std::string& name) const { return m_state.at(name); }
    // 0 when it does not run.
    pid_t mainProcess() const;

private:
    DorTest::Folder m_folder;
    std::string m_stateFile = m_folder.file("state");
    std::map<std::string, std::string> m_state;
};

} // namespace Conformance
