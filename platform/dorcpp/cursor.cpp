#include <dorcpp/cursor.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <string>

#include <dorcpp/charset.h>
#include <dorcpp/cursorstate.h>
#include <dorcpp/errors.h>
#include <dorcpp/value.h>

namespace DorCPP {

namespace {

// Cursors by handle.
class Handles {
public:
    static Handles& instance()
    {
        static Handles handles;
        return handles;
    }
    void add(const std::shared_ptr<CursorState>& state)
    {
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_states, [](const auto& entry) { return entry.second.expired(); });
        state->handle = ++m_last;
        m_states[state->handle] = state;
    }
    std::shared_ptr<CursorState> find(int handle)
    {
        const std::lock_guard lock(m_mutex);
        const auto at = m_states.find(handle);
        return at == m_states.end() ? nullptr : at->second.lock();
    }

private:
    std::mutex m_mutex;
    std::map<int, std::weak_ptr<CursorState>> m_states;
    int m_last = 0;
};

// Puts a name into a field of a descriptor; false when it had to be cut.
bool putName(const std::string& utf8, char (&field)[t_ParamDesc::nameSize], uint16_t& length)
{
    const std::string name = convert(utf8, Charset::Utf8, getStdCharset());
    const size_t n = mbs2mbs(field, sizeof field - 1, getStdCharset(), name.data(), name.size(),
                             getStdCharset());
    std::memset(field + n, 0, sizeof field - n);
    length = static_cast<uint16_t>(n);
    return n == name.size();
}

StatementText statementOf(const char* sql, SqlDialect dialect)
{
    return {SqlText(fromClient(sql ? sql : ""), dialect), {}, false};
}

StatementText statementOf(const DorStatement& statement, const BindMap* binds, SqlDialect dialect)
{
    if (!statement.isCreated())
        throw makeError(CodeBadCall, "the statement has not been created");
    StatementText text{SqlText(statement.text(), dialect), {}, true};
    if (!binds)
        return text;
    for (const auto& [number, value] : binds->values()) {
        if (number < 1 || number > statement.paramCount())
            throw makeError(CodeBadBind, "there is no parameter " + std::to_string(number));
        text.parameters.emplace_back(number,
                                     value.indicator || !value.data
                                         ? Parameter()
                                         : parameterFrom(value.type, value.data, value.length));
    }
    return text;
}

void probeSession(Session& session)
{
    try {
        const Session::Use driver(session);
        driver->probe();
    } catch (const DorX& x) {
        if (x.code() != CodeBusy) // a session that is at work is alive
            throw;
    }
}

int64_t targetRow(const CursorState& s, int direction, int64_t row)
{
    switch (direction) {
    case FetchFirst:
        return 1;
    case FetchLast:
        return s.rowCount();
    case FetchNext:
        return s.position + 1;
    case FetchPrevious:
        return s.position - 1;
    case FetchAbsolute:
        return row;
    default:
        throw makeError(CodeBadCall, "fetch direction " + std::to_string(direction));
    }
}

CursorState& created(const std::shared_ptr<CursorState>& state)
{
    if (!state)
        throw makeError(CodeBadCall, "the cursor has not been created");
    return *state;
}

void takeFinished(CursorState& s)
{
    if (!s.execution->isFinished())
        throw makeError(CodeBusy, OviAPI::Phrase::DbDetailCursorBusy);
    s.takeFinished();
}

// Not part of getData, whose common way stays short.
[[gnu::noinline]] ValueState deliverAny(RowSource& rows, size_t column, int clientType,
                                        void* buffer, size_t capacity, size_t& stored)
{
    Value value = rows.value(column);
    std::string more;
    if (value.held < value.length && value.held < capacity) { // the buffer takes more than is kept
        more.resize(std::min(value.length, capacity));
        more.resize(rows.piece(column, 0, more.data(), more.size()));
        value.data = more.data();
        value.held = more.size();
    }
    return deliver(value, clientType, buffer, capacity, stored);
}

void prepareFetch(CursorState& s)
{
    if (!s.answer.rows)
        throw makeError(CodeBadCall, "the cursor has no answer");
    if (s.pending)
        s.writePending();
}

// Moves the position to a row that the function reads.
template<class Read>
void moveTo(CursorState& s, int64_t row, Read read)
{
    s.row = CursorState::Row::None; // stays so when the row cannot be read
    read();
    s.position = row;
    s.noteRow();
}

void throwIfGone(const CursorState& s)
{
    if (s.row == CursorState::Row::Gone)
        throw makeError(CodeRowGone, OviAPI::Phrase::DbDetailRow, std::to_string(s.position));
}

// The state with the answer of a finished asynchronous statement taken over. Asked for every cell.
inline CursorState& idle(const std::shared_ptr<CursorState>& state)
{
    if (state && state->answerTaken) [[likely]]
        return *state;
    CursorState& s = created(state);
    takeFinished(s);
    return s;
}

} // namespace

DorCursor::Handler::~Handler() = default;

DorCursor::DorCursor() = default;

DorCursor::~DorCursor()
{
    if (!m_state || !m_owner)
        return;
    try {
        DorCursor::close();
    } catch (const std::exception&) {
        // Nobody is left who could be told that the last written value was refused.
    }
}

void DorCursor::create(const DorConnect& connection, int mode, const char* name, bool probe)
{
    auto state = std::make_shared<CursorState>();
    state->session = connection.session();
    state->mode = mode;
    state->name = name ? name : "";
    if (probe)
        probeSession(*state->session);
    if (m_state && m_owner)
        DorCursor::close();
    Handles::instance().add(state);
    m_state = std::move(state);
    m_owner = true;
}

void DorCursor::attach(int handle, bool takeOver)
{
    auto state = Handles::instance().find(handle);
    if (!state)
        throw makeError(CodeBadCall, "there is no cursor " + std::to_string(handle));
    if (m_state && m_owner && m_state != state)
        DorCursor::close();
    m_state = std::move(state);
    m_owner = takeOver;
}

int DorCursor::handle() const
{
    return m_state ? m_state->handle : 0;
}

void DorCursor::close()
{
    if (!m_state)
        return;
    try {
        m_state->writePending();
    } catch (...) {
        m_state->drop();
        throw;
    }
    m_state->drop();
}

void DorCursor::execute(const char* sql, Handler* handler)
{
    CursorState& s = idle(m_state);
    s.execute(statementOf(sql, s.session->dialect()), handler);
}

void DorCursor::execute(const DorStatement& statement, const BindMap* binds, Handler* handler)
{
    CursorState& s = idle(m_state);
    s.execute(statementOf(statement, binds, s.session->dialect()), handler);
}

bool DorCursor::isRunning() const
{
    const CursorState& s = created(m_state);
    return s.execution && !s.execution->isFinished();
}

bool DorCursor::isInCallback() const
{
    const CursorState& s = created(m_state);
    return s.execution && s.execution->isInCallback();
}

const DorX& DorCursor::lastError() const
{
    return idle(m_state).error;
}

int DorCursor::columnCount() const
{
    return static_cast<int>(idle(m_state).answer.columns.size());
}

void DorCursor::answerDesc(int i, t_ParamDesc& desc) const
{
    const CursorState& s = idle(m_state);
    const ColumnInfo& column = s.answer.columns[s.columnAt(i)];
    const bool named = putName(column.owner, desc.owner, desc.ownerLength) &&
                       putName(column.table, desc.table, desc.tableLength) &&
                       putName(column.column, desc.column, desc.columnLength) &&
                       !column.owner.empty() && !column.table.empty() && !column.column.empty();
    putName(column.label, desc.label, desc.labelLength);
    if (!named) { // a cut name would name something else
        putName({}, desc.owner, desc.ownerLength);
        putName({}, desc.table, desc.tableLength);
        putName(column.label, desc.column, desc.columnLength);
    }
    desc.type = static_cast<uint8_t>(column.type);
    desc.length = static_cast<uint16_t>(column.length);
}

int64_t DorCursor::selectRowCount() const
{
    return idle(m_state).rowCount();
}

int64_t DorCursor::changedRowCount() const
{
    return idle(m_state).answer.changed;
}

bool DorCursor::isKeyed() const
{
    return idle(m_state).isUpdatable();
}

int DorCursor::mode() const
{
    return created(m_state).mode;
}

void DorCursor::fetch(int direction, int64_t row, int64_t* reached, int64_t* rows)
{
    CursorState& s = idle(m_state);
    prepareFetch(s);
    const int64_t count = s.rowCount();
    const int64_t target = targetRow(s, direction, row);
    if (rows)
        *rows = count;
    if (target < 1 || target > count) {
        if (direction == FetchNext || direction == FetchPrevious) {
            s.position = target < 1 ? 0 : count + 1;
            s.row = CursorState::Row::None;
        }
        throw makeError(CodeNoRow);
    }
    moveTo(s, target, [&] { s.answer.rows->seek(target - 1); });
    if (reached)
        *reached = target;
    throwIfGone(s);
}

void DorCursor::fetchAnew(int64_t row)
{
    CursorState& s = idle(m_state);
    prepareFetch(s);
    if (row < 1 || row > s.rowCount())
        throw makeError(CodeNoRow);
    moveTo(s, row, [&] {
        s.answer.rows->seek(row - 1);
        s.answer.rows->refresh();
    });
    throwIfGone(s);
}

int64_t DorCursor::position() const
{
    return idle(m_state).position;
}

ValueState DorCursor::getData(int column, int clientType, void* buffer, size_t capacity,
                              short* indicator, size_t* length)
{
    CursorState& s = idle(m_state);
    const size_t i = s.columnAt(column);
    RowSource& rows = s.rowsFor(i);
    const RowBlock::Cell* cell = rows.cell(i);
    size_t stored = 0;
    const bool plain =
        cell && deliverPlain(rows.block(), *cell, clientType, buffer, capacity, stored);
    const ValueState state =
        plain ? ValueState::Exact : deliverAny(rows, i, clientType, buffer, capacity, stored);
    s.found[i] = {state, s.reading};
    if (indicator)
        *indicator = state == ValueState::Null ? 1 : 0;
    if (length)
        *length = state == ValueState::Null ? 0 : stored;
    return state;
}

ValueState DorCursor::valueState(int column) const
{
    CursorState& s = idle(m_state);
    const size_t i = s.columnAt(column);
    if (s.found[i].reading == s.reading)
        return s.found[i].state;
    return s.valueAt(i).kind == Value::Null ? ValueState::Null : ValueState::Exact;
}

bool DorCursor::isNull(int column) const
{
    CursorState& s = idle(m_state);
    return s.valueAt(s.columnAt(column)).kind == Value::Null;
}

int64_t DorCursor::getBlobLen(int column)
{
    CursorState& s = idle(m_state);
    const size_t i = s.columnAt(column);
    const Value value = s.valueAt(i);
    if (value.kind == Value::Integer)
        return static_cast<int64_t>(numberText(value.integer).size());
    if (value.kind == Value::Real)
        return static_cast<int64_t>(numberText(value.real).size());
    return static_cast<int64_t>(value.length);
}

size_t DorCursor::getBlob(int column, int64_t offset, void* buffer, size_t size)
{
    CursorState& s = idle(m_state);
    const size_t i = s.columnAt(column);
    const Value value = s.valueAt(i);
    std::string number;
    std::string_view bytes = value.bytes();
    if (value.kind == Value::Integer)
        bytes = number = numberText(value.integer);
    else if (value.kind == Value::Real)
        bytes = number = numberText(value.real);
    const size_t whole = std::max(value.length, bytes.size());
    if (offset < 0 || static_cast<size_t>(offset) >= whole)
        return 0;
    const auto from = static_cast<size_t>(offset);
    const size_t n = std::min(size, whole - from);
    if (from + n > bytes.size())
        return s.answer.rows->piece(i, from, buffer, n);
    std::memcpy(buffer, bytes.data() + from, n);
    return n;
}

void DorCursor::clearBlob(int column)
{
    CursorState& s = idle(m_state);
    const size_t i = s.columnAt(column);
    if (s.pending && s.pending->column != i)
        s.writePending();
    s.requireRow();
    if (!s.isUpdatable() || s.answer.columns[i].table.empty())
        throw makeError(CodeNotUpdatable, s.answer.columns[i].label);
    const int type = s.answer.columns[i].type;
    const bool bytes = type == TypeBlob || type == TypeByte || type == TypeVarbyte;
    auto pending = std::make_unique<CursorState::Pending>();
    pending->column = i;
    pending->kind = bytes ? Value::Blob : Value::Text;
    pending->value = std::make_unique<BigValue>();
    s.pending = std::move(pending);
}

void DorCursor::appendBlob(int column, const void* data, size_t size)
{
    CursorState& s = idle(m_state);
    const size_t i = s.columnAt(column);
    if (!s.pending || s.pending->column != i) {
        auto before = std::make_unique<BigValue>();
        std::vector<char> piece(std::min<size_t>(static_cast<size_t>(getBlobLen(column)), 1 << 20));
        int64_t at = 0;
        while (const size_t n = getBlob(column, at, piece.data(), piece.size())) {
            before->append(piece.data(), n);
            at += static_cast<int64_t>(n);
        }
        clearBlob(column);
        s.pending->value = std::move(before);
    }
    try {
        s.pending->value->append(data, size);
    } catch (...) {
        s.pending.reset(); // half a value is never written
        throw;
    }
}

void DorCursor::giveUpBlob()
{
    idle(m_state).pending.reset();
}

int DorCursor::blobType(int column) const
{
    const CursorState& s = idle(m_state);
    return s.answer.columns[s.columnAt(column)].type;
}

} // namespace DorCPP

int DORVEX_GetCursorOption(int handle, int option, int column, void* value, int size)
{
    using namespace DorCPP;
    try {
        if (size != static_cast<int>(sizeof(int32_t)) || !value)
            return CodeBadCall;
        DorCursor cursor;
        cursor.attach(handle, false);
        int32_t answer = 0;
        if (option == CursorOptionNull)
            answer = cursor.isNull(column) ? 1 : 0;
        else if (option == CursorOptionBlobType)
            answer = cursor.blobType(column);
        else
            return CodeBadCall;
        std::memcpy(value, &answer, sizeof answer);
        return 0;
    } catch (const DorX& x) {
        return x.code();
    }
}
