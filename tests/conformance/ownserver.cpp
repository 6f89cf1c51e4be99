#include "ownserver.h"

#include <cstdlib>
#include <fstream>

#include "support.h"

namespace Conformance {

OwnServer::OwnServer()
{
    run("plain");
    m_state = readServer(m_stateFile);
}

OwnServer::~OwnServer()
{
    run("stop");
}

void OwnServer::run(const std::string& action) const
{
    const std::string command =
        "python3 '" OVI_PGCLUSTER_SCRIPT "' " + action + " '" + m_stateFile + '\'';
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
}

void OwnServer::open(DorCPP::DorConnect& connection, const std::string& more) const
{
    const std::string text =
        "host=127.0.0.1 port=" + at("port") + " dbname=" + at("database") + ' ' + more;
    connection.createCS(at("user").c_str(), at("password").c_str(), text.c_str(), "", 0, false,
                        false);
}

pid_t OwnServer::mainProcess() const
{
    std::ifstream file(at("folder") + "/data/postmaster.pid");
    pid_t pid = 0;
    file >> pid;
    return pid;
}

} // namespace Conformance
