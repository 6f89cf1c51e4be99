#include "support.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include <unistd.h>

#include <oviapi/text.h>

namespace Conformance {

std::map<std::string, std::string> readServer(const std::string& stateFile)
{
    std::map<std::string, std::string> state;
    std::ifstream file(stateFile);
    for (std::string line; std::getline(file, line);) {
        const size_t equals = line.find('=');
        state[line.substr(0, equals)] = line.substr(equals + 1);
    }
    if (state.empty())
        throw std::runtime_error("the test server has not been started: " + stateFile);
    return state;
}

const std::map<std::string, std::string>& server()
{
    static const auto state = readServer(OVI_PGCLUSTER);
    return state;
}

bool isLong()
{
    const char* value = std::getenv("OVI_STRESS");
    return value && *value == '1';
}

bool says(const DorX& x, OviAPI::Phrase phrase)
{
    const std::string wanted = OviAPI::wideToUtf8(OviAPI::phrase(phrase));
    return std::any_of(x.nested().begin(), x.nested().end(), [&](const DorX& nested) {
        return std::string(nested.what()).find(wanted) != std::string::npos;
    });
}

namespace {

std::string serverText(const std::string& schema)
{
    const auto& s = server();
    std::string text = "host=" + s.at("host") + " port=" + s.at("port") +
                       " dbname=" + s.at("database") + " sslmode=disable";
    return schema.empty() ? text : text + " options=-csearch_path=" + schema;
}

void onServer(const std::string& sql)
{
    DorConnect connection;
    connection.createCS(server().at("user").c_str(), server().at("password").c_str(),
                        serverText("").c_str(), "", 0, false, false);
    DorCursor cursor;
    cursor.create(connection, 0, nullptr, false);
    cursor.execute(sql.c_str());
}

} // namespace

Place::Place(Engine engine)
    : m_engine(engine)
    , m_schema("main")
{
    static int count = 0;
    if (engine == Engine::Sqlite) {
        DorConnect connection;
        open(connection, "create");
        return;
    }
    m_schema = "test_" + std::to_string(::getpid()) + '_' + std::to_string(++count);
    onServer("CREATE SCHEMA " + m_schema);
}

Place::~Place()
{
    if (m_engine == Engine::Sqlite)
        return;
    try {
        onServer("DROP SCHEMA " + m_schema + " CASCADE");
    } catch (const std::exception& e) {
        ADD_FAILURE() << e.what();
    }
}

std::string Place::database() const
{
    return m_engine == Engine::Sqlite ? m_folder.file("test.db") : serverText(m_schema);
}

void Place::open(DorConnect& connection, const char* options, int mode) const
{
    const bool file = m_engine == Engine::Sqlite;
    connection.createCS(file ? "" : server().at("user").c_str(),
                        file ? "" : server().at("password").c_str(), database().c_str(), options,
                        mode, false, true);
}

void Waiter::handler(unsigned short s, int c)
{
    const std::lock_guard lock(m_mutex);
    status = s;
    code = c;
    ++calls;
    m_called.notify_all();
}

bool Waiter::wait(int count, std::chrono::milliseconds time)
{
    std::unique_lock lock(m_mutex);
    return m_called.wait_for(lock, time, [&] { return calls >= count; });
}

std::string Client::value(const std::string& sql)
{
    execute(sql);
    cursor.fetch(FetchFirst, 0);
    return text(cursor, 1);
}

void OnEngine::fill(int count)
{
    execute("CREATE TABLE n(id INTEGER PRIMARY KEY, s VARCHAR(40))");
    execute("INSERT INTO n WITH RECURSIVE c(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM c "
            "WHERE i < " +
            std::to_string(count) + ") SELECT i, 'row ' || i FROM c");
}

std::string OnEngine::endless()
{
    return "WITH RECURSIVE c(i) AS (SELECT 1 UNION ALL SELECT i % 1000 + 1 FROM c) "
           "SELECT count(*) FROM c";
}

} // namespace Conformance
