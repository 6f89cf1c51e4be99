#include <dorcpp/postgresql/statement.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <system_error>
#include <thread>

#include <poll.h>
#include <sys/socket.h>

#include <dorcpp/errors.h>
#include <dorcpp/postgresql/errors.h>
#include <dorcpp/signalsblocked.h>
#include <dorcpp/value.h>

namespace DorCPP::Postgresql {

namespace {

constexpr size_t maxValue = 1 << 30; // bytes; the server takes no longer ones

// Whether a connection ended because nothing came through the network any more. Asking the server
// again would find out nothing.
bool isSilence(std::string_view words)
{
    for (const int error : {ETIMEDOUT, EHOSTUNREACH, ENETUNREACH, ENETDOWN}) {
        if (words.find(std::generic_category().message(error)) != std::string_view::npos)
            return true;
    }
    return false;
}

bool contains(std::string_view set, char c)
{
    return set.find(c) != std::string_view::npos;
}

// What token i of the text stands for.
enum class Mark { None, Number, Next, Operator };

Mark markOf(const SqlText& s, const std::string& sql, size_t i)
{
    const SqlToken& token = s.tokens()[i];
    const std::string_view str = s.str(i);
    if (token.kind != SqlToken::Parameter || (str[0] != '?' && str[0] != '$'))
        return Mark::None;
    if (str.size() > 1) {
        const bool digits = str.find_first_not_of("0123456789", 1) == std::string_view::npos;
        return digits ? Mark::Number : Mark::None;
    }
    const char before = token.from > 0 ? sql[token.from - 1] : ' ';
    const char after = token.to < sql.size() ? sql[token.to] : ' ';
    const char behind = token.to + 1 < sql.size() ? sql[token.to + 1] : ' ';
    if (after == '?')
        return Mark::Operator;
    if (before == '@' || after == '&' || (after == '|' && behind != '|'))
        return Mark::None;
    return str[0] == '?' ? Mark::Next : Mark::None;
}

// Whether a text or blob is sent in its text form.
bool isSentAsText(const Value& value, Oid type)
{
    if (value.held > maxValue)
        throw makeError(CodeTooBig);
    const bool plain = value.kind == Value::Text && type != ByteaType;
    if (plain && contains(value.bytes(), '\0'))
        throw makeError(CodeBadBind, OviAPI::Phrase::DbDetailZeroInText);
    return plain;
}

int numberIn(std::string_view digits)
{
    int number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc() || number < 1 || number > 65535)
        throw makeError(CodeBadBind, "there is no parameter " + std::string(digits));
    return number;
}

} // namespace

Value valueAt(const PGresult* result, int row, int column, std::string& own)
{
    if (PQgetisnull(result, row, column))
        return {};
    return valueOf({PQftype(result, column), PQfformat(result, column) == 1,
                    PQgetvalue(result, row, column),
                    static_cast<size_t>(PQgetlength(result, row, column))},
                   own);
}

Fields::Fields(const PGresult* result)
{
    const int columns = PQnfields(result);
    m_forms.reserve(static_cast<size_t>(columns));
    for (int i = 0; i < columns; ++i) {
        const Oid type = PQftype(result, i);
        const bool binary = PQfformat(result, i) == 1;
        m_forms.push_back({type, binary, plainForm(type, binary)});
    }
}

Value Fields::value(const PGresult* result, int row, int column, std::string& own) const
{
    const int length = PQgetlength(result, row, column);
    if (length == 0 && PQgetisnull(result, row, column))
        return {};
    const Form& form = m_forms[static_cast<size_t>(column)];
    return valueOf(
        {form.type, form.binary, PQgetvalue(result, row, column), static_cast<size_t>(length)},
        own);
}

std::string textAt(const PGresult* result, int row, int column)
{
    return {PQgetvalue(result, row, column), static_cast<size_t>(PQgetlength(result, row, column))};
}

ServerText::ServerText(const std::string& sql)
{
    const SqlText s(sql, SqlDialect::Postgresql);
    for (size_t i = 0; i < s.count(); ++i) {
        const SqlToken& token = s.tokens()[i];
        const Mark mark = markOf(s, sql, i);
        if (mark == Mark::None)
            continue;
        copy(sql, token.from);
        if (mark == Mark::Operator) {
            m_text += '?';
            m_copied = token.to + 1;
            ++i;
        } else {
            const int number = mark == Mark::Next ? m_parameters + 1 : numberIn(s.str(i).substr(1));
            m_parameters = std::max(m_parameters, number);
            m_text += '$' + std::to_string(number);
            m_copied = token.to;
        }
    }
    copy(sql, sql.size());
}

void ServerText::copy(const std::string& sql, size_t end)
{
    m_shifts.push_back({m_text.size(), m_copied});
    m_text.append(sql, m_copied, end - m_copied);
    m_copied = end;
}

int ServerText::clientByte(int character) const
{
    size_t byte = 0;
    for (int seen = 0; byte < m_text.size(); ++byte) {
        if ((m_text[byte] & 0xC0) != 0x80 && ++seen == character)
            break;
    }
    const auto behind = std::find_if(m_shifts.begin(), m_shifts.end(),
                                     [&](const Shift& shift) { return shift.from > byte; });
    if (behind == m_shifts.begin())
        return 0;
    const Shift& shift = *(behind - 1);
    return static_cast<int>(shift.client + (byte - shift.from) + 1);
}

void Values::set(int number, std::string text)
{
    if (number < 1 || number > count())
        throw makeError(CodeBadBind, "there is no parameter " + std::to_string(number));
    const auto i = static_cast<size_t>(number) - 1;
    m_own[i] = std::move(text);
    m_data[i] = m_own[i].c_str();
    m_lengths[i] = static_cast<int>(m_own[i].size());
    m_formats[i] = 0;
}

void Values::set(int number, const Value& value, Oid type)
{
    switch (value.kind) {
    case Value::Null:
        set(number, std::string());
        m_data[static_cast<size_t>(number) - 1] = nullptr;
        break;
    case Value::Integer:
        set(number, numberText(value.integer));
        break;
    case Value::Real: {
        std::string text = numberText(value.real);
        const bool whole = type == Int2Type || type == Int4Type || type == Int8Type;
        if (whole && text.ends_with(".0"))
            text.resize(text.size() - 2);
        set(number, std::move(text));
        break;
    }
    case Value::Text:
    case Value::Blob: {
        const bool plain = isSentAsText(value, type);
        set(number, std::string(value.bytes()));
        m_formats[static_cast<size_t>(number) - 1] = plain ? 0 : 1;
        break;
    }
    }
}

void Values::setOutside(int number, const Value& value, Oid type)
{
    const bool alike = type == TextType || type == VarcharType || type == BpcharType;
    if (isSentAsText(value, type) && !alike) { // its end must be marked, which takes a copy
        set(number, value, type);
        return;
    }
    set(number, std::string());
    const auto i = static_cast<size_t>(number) - 1;
    m_data[i] = value.data;
    m_lengths[i] = static_cast<int>(value.held);
    m_formats[i] = 1;
}

struct Canceller::Shared {
    struct Free {
        void operator()(PGcancel* cancel) const { PQfreeCancel(cancel); }
    };
    explicit Shared(PGcancel* cancel)
        : handle(cancel)
    {
    }
    const std::unique_ptr<PGcancel, Free> handle;
    std::mutex mutex;
    std::condition_variable ended;
    bool underWay = false;

    void end()
    {
        {
            const std::lock_guard lock(mutex);
            underWay = false;
        }
        ended.notify_all();
    }
};

Canceller::Canceller(PGconn* connection)
    : m_shared(std::make_shared<Shared>(PQgetCancel(connection)))
{
}

void Canceller::start() noexcept
{
    if (!m_shared->handle)
        return;
    {
        const std::lock_guard lock(m_shared->mutex);
        if (m_shared->underWay)
            return;
        m_shared->underWay = true;
    }
    try {
        const SignalsBlocked blocked;
        std::thread([shared = m_shared] {
            char error[256];
            PQcancel(shared->handle.get(), error, sizeof error); // a failure shows: nothing ends
            shared->end();
        }).detach();
    } catch (const std::exception&) {
        m_shared->end(); // no thread can be made: whoever waits gives up after a while
    }
}

bool Canceller::waitForEnd(std::chrono::milliseconds time)
{
    std::unique_lock lock(m_shared->mutex);
    return m_shared->ended.wait_for(lock, time, [&] { return !m_shared->underWay; });
}

Link::Link(const Target& target)
    : m_connection(openServer(target, m_words))
    , m_canceller(std::make_unique<Canceller>(get()))
{
}

bool Link::listen()
{
    pollfd p{PQsocket(get()), POLLIN, 0};
    while (!isLost() && ::poll(&p, 1, 0) > 0) {
        if (!PQconsumeInput(get()))
            return false;
        PQisBusy(get()); // reads the messages, which the notice receiver hears
    }
    while (PGnotify* notification = PQnotifies(get())) // of the user's LISTEN: nobody asks for them
        PQfreemem(notification);
    return !isLost();
}

void Link::watch(const std::atomic<bool>* stop)
{
    if (!stop && !m_gaveUp && !m_canceller->waitForEnd(patience))
        giveUp(); // what the request will hit is not known any more
    m_stop = stop;
    m_stopSeen.reset();
}

void Link::giveUp()
{
    m_gaveUp = true;
    ::shutdown(PQsocket(get()), SHUT_RDWR);
}

void Link::lookAtStop()
{
    if (!m_stop || !*m_stop || m_gaveUp)
        return;
    const auto now = Clock::now();
    if (!m_stopSeen) {
        m_stopSeen = now;
        m_askAgain = now + patience / 8;
    }
    if (now - *m_stopSeen > patience) {
        giveUp();
    } else if (now > m_askAgain) { // the request may have come before the statement
        m_canceller->start();
        m_askAgain = now + patience / 8;
    }
}

void Link::waitForSocket(short events)
{
    while (true) {
        pollfd p{PQsocket(get()), events, 0};
        const int n = ::poll(&p, 1, m_stop ? 50 : -1);
        lookAtStop();
        if (n > 0 || (n < 0 && errno != EINTR))
            return;
    }
}

void Link::begin()
{
    m_sent = false;
    m_faultAt = 0;
    if (m_outstanding)
        drain();
    if (m_stop && *m_stop)
        throw makeError(CodeCancelled);
    if (!listen())
        failLost(m_words.state, m_words.text);
}

void Link::sent(int good)
{
    if (!good)
        failLost({}, PQerrorMessage(get()));
    m_sent = m_outstanding = true;
    ++m_serial;
    while (PQflush(get()) > 0) { // below 0 the results tell the error
        waitForSocket(POLLIN | POLLOUT);
        if (!PQconsumeInput(get()))
            break;
    }
}

void Link::send(const std::string& sql, const Values& values, bool binary)
{
    begin();
    sent(PQsendQueryParams(get(), sql.c_str(), values.count(), nullptr, values.data(),
                           values.lengths(), values.formats(), binary));
}

void Link::sendPrepared(const std::string& name, const Values& values, bool binary)
{
    begin();
    sent(PQsendQueryPrepared(get(), name.c_str(), values.count(), values.data(), values.lengths(),
                             values.formats(), binary));
}

void Link::sendParse(const std::string& name, const std::string& sql)
{
    begin();
    sent(PQsendPrepare(get(), name.c_str(), sql.c_str(), 0, nullptr));
}

void Link::sendDescribe(const std::string& name)
{
    begin();
    sent(PQsendDescribePrepared(get(), name.c_str()));
}

Result Link::next()
{
    while (PQisBusy(get())) {
        waitForSocket(POLLIN);
        if (!PQconsumeInput(get()))
            break;
    }
    lookAtStop();
    return Result(PQgetResult(get()));
}

void Link::drain()
{
    while (const Result result = next()) {
        switch (PQresultStatus(result.get())) {
        case PGRES_COPY_IN:
        case PGRES_COPY_BOTH:
            PQputCopyEnd(get(), "COPY from the client");
            break;
        case PGRES_COPY_OUT: {
            char* message = nullptr;
            int size = 0;
            while ((size = PQgetCopyData(get(), &message, 1)) >= 0) {
                PQfreemem(message);
                if (size > 0)
                    continue;
                waitForSocket(POLLIN);
                if (!PQconsumeInput(get()))
                    break;
            }
            break;
        }
        default:
            break;
        }
        if (isLost())
            break;
    }
    m_outstanding = false;
}

void Link::abandon()
{
    m_canceller->start();
    drain();
    if (!m_canceller->waitForEnd(patience))
        giveUp();
}

void Link::failLost(std::string_view state, std::string_view words)
{
    std::string said(words.empty() ? PQerrorMessage(get()) : words);
    said.erase(said.find_last_not_of(" \n") + 1);
    if (m_gaveUp)
        throw errorFor("08006", detailText(OviAPI::Phrase::DbDetailNoAnswer));
    const std::string_view known = state.empty() ? std::string_view("08006") : state;
    // An administrator ends one session or the whole server with the same words.
    if ((known == "57P01" || known == "08006") && !isSilence(said) && !answers(get()))
        throw makeEngineError(CodeServerStopped, numberOf(known), said);
    throw errorFor(known, said);
}

// Throws the error that the result holds, when nothing is left of the statement.
void Link::check(Result& result)
{
    const auto status = result ? PQresultStatus(result.get()) : PGRES_FATAL_ERROR;
    const bool bad = status == PGRES_FATAL_ERROR || status == PGRES_BAD_RESPONSE;
    const bool copies =
        status == PGRES_COPY_IN || status == PGRES_COPY_OUT || status == PGRES_COPY_BOTH;
    if (!bad && !copies)
        return;
    if (status == PGRES_COPY_IN || status == PGRES_COPY_BOTH)
        PQputCopyEnd(get(), "COPY from the client");
    else if (status == PGRES_COPY_OUT)
        m_canceller->start();
    drain();
    if (status == PGRES_COPY_OUT && !m_canceller->waitForEnd(patience))
        giveUp();
    if (isLost()) {
        const std::string state(result ? stateOf(result.get()) : "");
        if (!state.empty())
            failLost(state, wordsOf(result.get()));
        if (!m_words.state.empty())
            failLost(m_words.state, m_words.text);
        failLost({}, result ? wordsOf(result.get()) : std::string());
    }
    if (copies)
        throw makeError(CodeSqlText, OviAPI::Phrase::DbDetailCopy);
    if (const char* at = PQresultErrorField(result.get(), PG_DIAG_STATEMENT_POSITION))
        m_faultAt = std::atoi(at);
    throw errorFor(result.get());
}

// Reads what follows a good result. The server commits a statement of its own only now, so it may
// still fail.
void Link::finish()
{
    while (Result rest = next())
        check(rest);
    m_outstanding = false;
    if (isLost())
        failLost(m_words.state, m_words.text);
}

Result Link::take()
{
    Result first = next();
    check(first);
    finish();
    return first;
}

Result Link::takeRows(const std::function<void(const PGresult*)>& row)
{
    PQsetSingleRowMode(get());
    while (true) {
        Result result = next();
        if (!result || PQresultStatus(result.get()) != PGRES_SINGLE_TUPLE) {
            check(result);
            finish();
            return result;
        }
        try {
            row(result.get());
        } catch (...) {
            abandon();
            throw;
        }
    }
}

void Link::takeCopy(const std::function<void(std::string_view)>& message)
{
    Result start = next();
    if (!start || PQresultStatus(start.get()) != PGRES_COPY_OUT) {
        check(start);
        finish();
        return;
    }
    while (true) {
        char* data = nullptr;
        const int size = PQgetCopyData(get(), &data, 1);
        const std::unique_ptr<char, void (*)(void*)> owner(data, PQfreemem);
        if (size < 0)
            break;
        lookAtStop();
        if (size == 0) {
            waitForSocket(POLLIN);
            if (!PQconsumeInput(get()))
                break;
            continue;
        }
        try {
            message({data, static_cast<size_t>(size)});
        } catch (...) {
            abandon();
            throw;
        }
    }
    Result end = next();
    check(end);
    finish();
}

std::vector<DescribedColumn> describedColumns(const PGresult* result)
{
    std::vector<DescribedColumn> columns;
    columns.reserve(static_cast<size_t>(PQnfields(result)));
    for (int i = 0; i < PQnfields(result); ++i)
        columns.push_back({PQfname(result, i), PQftype(result, i), PQfmod(result, i),
                           PQftable(result, i), PQftablecol(result, i)});
    return columns;
}

bool areBinary(const std::vector<DescribedColumn>& columns)
{
    return std::all_of(columns.begin(), columns.end(),
                       [](const DescribedColumn& c) { return hasBinaryForm(c.type); });
}

void checkText(const std::string& sql)
{
    if (contains(sql, '\0'))
        throw makeError(CodeSqlText, OviAPI::Phrase::DbDetailZeroInText);
}

Values Prepared::values(const Parameters& parameters) const
{
    Values values(static_cast<int>(parameterTypes.size()));
    for (const auto& [number, parameter] : parameters) {
        const auto i = static_cast<size_t>(number) - 1;
        const Oid type = i < parameterTypes.size() ? parameterTypes[i] : 0;
        if (parameter.outside.data())
            values.setOutside(number, valueOf(parameter), type);
        else
            values.set(number, valueOf(parameter), type);
    }
    return values;
}

const Prepared& StatementCache::get(Link& link, const std::string& sql)
{
    if (const auto at = m_bySql.find(sql); at != m_bySql.end()) {
        m_entries.splice(m_entries.begin(), m_entries, at->second);
        return m_entries.front().statement;
    }
    checkText(sql);
    dropUnused(link);
    Entry entry{sql, Prepared("dorcpp_" + std::to_string(++m_last), sql)};
    Prepared& statement = entry.statement;
    link.sendParse(statement.name, statement.text.text());
    link.take();
    m_unused.push_back(statement.name); // until it is entered below
    link.sendDescribe(statement.name);
    const Result described = link.take();
    for (int i = 0; i < PQnparams(described.get()); ++i)
        statement.parameterTypes.push_back(PQparamtype(described.get(), i));
    statement.columns = describedColumns(described.get());
    statement.binary = areBinary(statement.columns);
    m_unused.pop_back();
    if (m_entries.size() == maxCount) {
        m_unused.push_back(m_entries.back().statement.name);
        m_bySql.erase(m_entries.back().sql);
        m_entries.pop_back();
    }
    m_entries.push_front(std::move(entry));
    m_bySql[m_entries.front().sql] = m_entries.begin();
    return m_entries.front().statement;
}

void StatementCache::dropUnused(Link& link)
{
    while (!m_unused.empty() && link.transaction() == PQTRANS_IDLE) {
        const std::string name = std::move(m_unused.back());
        m_unused.pop_back();
        link.send("DEALLOCATE " + name, Values(), false);
        link.take();
    }
}

void StatementCache::clear(bool keptByServer)
{
    m_bySql.clear();
    if (keptByServer) {
        for (const Entry& entry : m_entries)
            m_unused.push_back(entry.statement.name);
    } else {
        m_unused.clear();
    }
    m_entries.clear();
}

} // namespace DorCPP::Postgresql
