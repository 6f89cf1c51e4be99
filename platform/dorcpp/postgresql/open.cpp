#include <dorcpp/postgresql/open.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <dorcpp/errors.h>
#include <dorcpp/postgresql/errors.h>

namespace DorCPP::Postgresql {

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* systemAuthorities = "/etc/ssl/certs/ca-certificates.crt";

// The client library's list of options with their values, which may hold the password.
class Options {
public:
    explicit Options(PQconninfoOption* options)
        : m_options(options)
    {
    }
    ~Options()
    {
        for (PQconninfoOption* o = m_options; o && o->keyword; ++o) {
            if (o->val)
                explicit_bzero(o->val, std::strlen(o->val));
        }
        PQconninfoFree(m_options);
    }
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;

    explicit operator bool() const { return m_options != nullptr; }
    const PQconninfoOption* begin() const { return m_options; }
    // Empty for an option without a value.
    std::string_view value(const char* keyword) const
    {
        for (const PQconninfoOption* o = m_options; o && o->keyword; ++o) {
            if (std::strcmp(o->keyword, keyword) == 0)
                return o->val ? o->val : "";
        }
        return {};
    }

private:
    PQconninfoOption* m_options;
};

// Keywords with values that live elsewhere; a later value for a keyword replaces the earlier.
class Keywords {
public:
    void set(const char* keyword, const char* value)
    {
        const auto at = std::find_if(m_keywords.begin(), m_keywords.end(),
                                     [&](const char* k) { return std::strcmp(k, keyword) == 0; });
        if (at != m_keywords.end()) {
            m_values[static_cast<size_t>(at - m_keywords.begin())] = value;
            return;
        }
        m_keywords.push_back(keyword);
        m_values.push_back(value);
    }
    Connection start()
    {
        m_keywords.push_back(nullptr);
        m_values.push_back(nullptr);
        Connection connection(PQconnectStartParams(m_keywords.data(), m_values.data(), 0));
        m_keywords.pop_back();
        m_values.pop_back();
        if (!connection)
            throw makeError(CodeNoMemory);
        return connection;
    }

private:
    std::vector<const char*> m_keywords;
    std::vector<const char*> m_values;
};

[[noreturn]] void refuseText()
{
    throw makeError(CodeCannotOpen, OviAPI::Phrase::DbDetailConnectionText);
}

std::vector<std::string_view> parts(std::string_view list)
{
    std::vector<std::string_view> all;
    while (true) {
        const size_t comma = list.find(',');
        all.push_back(list.substr(0, comma));
        if (comma == std::string_view::npos)
            return all;
        list.remove_prefix(comma + 1);
    }
}

// What a password with a sign that means something in an address leaves behind: the library's own
// messages would show such pieces.
void checkPieces(std::string_view text, const Options& given)
{
    for (const std::string_view port : parts(given.value("port"))) {
        int number = 0;
        const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), number);
        if (!port.empty() && (error != std::errc() || end != port.data() + port.size()))
            refuseText();
    }
    const bool address = text.starts_with("postgresql://") || text.starts_with("postgres://");
    const std::string_view path = text.substr(0, text.find('?'));
    const size_t slash = address ? path.find('/', path.find("//") + 2) : std::string_view::npos;
    if (slash != std::string_view::npos && path.find('@', slash) != std::string_view::npos)
        refuseText();
}

bool isLocal(std::string_view host)
{
    return host.empty() || host[0] == '/' || host[0] == '@' || host == "localhost" ||
           host == "127.0.0.1" || host == "::1";
}

bool isLocal(const Options& options)
{
    const auto hosts = parts(options.value("host"));
    const auto addresses = parts(options.value("hostaddr"));
    for (size_t i = 0; i < std::max(hosts.size(), addresses.size()); ++i) {
        const bool addressed = i < addresses.size() && !addresses[i].empty();
        if (!isLocal(addressed ? addresses[i] : i < hosts.size() ? hosts[i] : std::string_view()))
            return false;
    }
    return true;
}

// Whether somebody chose how far TLS is to be trusted. A service's "prefer" cannot be told from
// the library's own default and counts as no choice.
bool isTlsChosen(const Options& given, const Options& effective)
{
    return !given.value("sslmode").empty() || std::getenv("PGSSLMODE") ||
           std::getenv("PGREQUIRESSL") || effective.value("sslmode") != "prefer";
}

bool hasOwnAuthorities()
{
    const char* home = std::getenv("HOME");
    return home && ::access((std::string(home) + "/.postgresql/root.crt").c_str(), R_OK) == 0;
}

void setTls(Keywords& keywords, const Options& given, const Options& effective)
{
    std::string_view mode = effective.value("sslmode");
    if (!isLocal(effective) && !isTlsChosen(given, effective)) {
        mode = "verify-full";
        keywords.set("sslmode", "verify-full");
    }
    const std::string_view authorities = effective.value("sslrootcert");
    const bool asSystem = authorities == "system" && PQlibVersion() < 160000;
    const bool unnamed = authorities.empty() && mode.starts_with("verify") && !hasOwnAuthorities();
    if ((asSystem || unnamed) && ::access(systemAuthorities, R_OK) == 0)
        keywords.set("sslrootcert", systemAuthorities);
}

void setDefault(Keywords& keywords, const Options& effective, const char* keyword,
                const char* value)
{
    if (effective.value(keyword).empty())
        keywords.set(keyword, value);
}

void hear(void* words, const PGresult* result)
{
    const char* severity = PQresultErrorField(result, PG_DIAG_SEVERITY_NONLOCALIZED);
    const std::string_view level = severity ? severity : "";
    if (level == "FATAL" || level == "PANIC") {
        auto& last = *static_cast<LastWords*>(words);
        last.state = stateOf(result);
        last.text = wordsOf(result);
    }
}

std::string messageOf(const PGconn* connection)
{
    std::string text = PQerrorMessage(connection);
    text.erase(text.find_last_not_of(" \n") + 1);
    return text;
}

// Waits for the next step of connecting; false after the time for one address.
bool waitFor(int socket, short events, Clock::time_point end)
{
    while (true) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        if (left <= 0)
            return false;
        pollfd p{socket, events, 0};
        const int n = ::poll(&p, 1, static_cast<int>(left));
        if (n > 0 || (n < 0 && errno != EINTR))
            return true;
    }
}

void connect(PGconn* connection, std::chrono::seconds limit)
{
    int socket = -1;
    bool late = false;
    Clock::time_point end;
    auto step = PGRES_POLLING_WRITING;
    while (PQstatus(connection) != CONNECTION_BAD && step != PGRES_POLLING_FAILED) {
        if (step == PGRES_POLLING_OK)
            return;
        if (PQsocket(connection) != socket) { // the next of the server's addresses
            socket = PQsocket(connection);
            end = Clock::now() + limit;
            late = false;
        }
        if (!waitFor(socket, step == PGRES_POLLING_READING ? POLLIN : POLLOUT, end)) {
            if (late)
                break;
            late = true; // the library finds its socket shut and goes on to the next address
            end = Clock::now() + limit;
            ::shutdown(socket, SHUT_RDWR);
        }
        step = PQconnectPoll(connection);
    }
    std::string said = messageOf(connection);
    if (late)
        said += (said.empty() ? "" : "\n") + detailText(OviAPI::Phrase::DbDetailNoAnswer);
    throw makeError(CodeCannotOpen, said);
}

std::chrono::seconds timeLimit(const Options& effective)
{
    const std::string_view text = effective.value("connect_timeout");
    int seconds = 5;
    std::from_chars(text.data(), text.data() + text.size(), seconds);
    return std::chrono::seconds(seconds > 0 ? std::max(seconds, 2) : 3600);
}

} // namespace

Connection openServer(const Target& target, LastWords& words)
{
    const std::string_view text = target.server.text();
    char* fault = nullptr;
    const Options given(PQconninfoParse(target.server.text(), &fault));
    if (fault) { // it quotes the text
        explicit_bzero(fault, std::strlen(fault));
        PQfreemem(fault);
    }
    if (!given)
        refuseText();
    checkPieces(text, given);
    Keywords asked;
    for (const PQconninfoOption* o = given.begin(); o->keyword; ++o) {
        if (o->val)
            asked.set(o->keyword, o->val);
    }
    if (!target.user.empty())
        asked.set("user", target.user.c_str());
    if (!target.password.empty())
        asked.set("password", target.password.text());

    // The library fills in what was left open, then stops at an impossible wish before it connects.
    Keywords impossible = asked;
    impossible.set("target_session_attrs", "unknown");
    const Connection resolved = impossible.start();
    const Options effective(PQconninfo(resolved.get()));
    if (!effective)
        throw makeError(CodeNoMemory);

    setTls(asked, given, effective);
    setDefault(asked, effective, "keepalives_idle", "5");
    setDefault(asked, effective, "keepalives_interval", "2");
    setDefault(asked, effective, "keepalives_count", "3");
    setDefault(asked, effective, "tcp_user_timeout", "5000");
    setDefault(asked, effective, "fallback_application_name", "oviext");
    asked.set("client_encoding", "UTF8");
    Connection connection = asked.start();
    PQsetNoticeReceiver(connection.get(), hear, &words);
    connect(connection.get(), timeLimit(effective));
    PQsetnonblocking(connection.get(), 1);
    return connection;
}

bool answers(const PGconn* connection)
{
    const char* const keywords[] = {"host",    "port",       "dbname",   "user", "connect_timeout",
                                    "sslmode", "gssencmode", "password", nullptr};
    const char* const values[] = {PQhost(connection),
                                  PQport(connection),
                                  PQdb(connection),
                                  PQuser(connection),
                                  "2",
                                  "disable",
                                  "disable",
                                  "",
                                  nullptr};
    return PQpingParams(keywords, values, 0) == PQPING_OK;
}

} // namespace DorCPP::Postgresql
