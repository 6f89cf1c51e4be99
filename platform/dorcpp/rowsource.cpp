#include <dorcpp/rowsource.h>

#include <algorithm>

#include <dorcpp/errors.h>

namespace DorCPP {

namespace {

// Adds a row of another block at the end; returns its place.
int copyRow(const RowBlock& from, size_t row, RowBlock& to)
{
    to.beginRow();
    for (size_t i = 0; i < from.columns(); ++i) {
        const Value value = from.value(row, i);
        switch (value.kind) {
        case Value::Null:
            to.addNull();
            break;
        case Value::Integer:
            to.addInteger(value.integer);
            break;
        case Value::Real:
            to.addReal(value.real);
            break;
        case Value::Text:
        case Value::Blob:
            to.addBytes(value.kind, value.data, value.length);
            break;
        }
    }
    return static_cast<int>(to.rows()) - 1;
}

} // namespace

bool SpooledRows::seek(int64_t row)
{
    standNowhere(); // in case the row cannot be read
    m_row = row;
    const size_t place = m_rows->load(row);
    standOn(m_rows->block(), place);
    return true;
}

size_t SpooledRows::piece(size_t column, uint64_t offset, void* buffer, size_t size)
{
    return m_rows->piece(m_row, column, offset, buffer, size);
}

void SpooledRows::modify(const RowStatement&, Driver&)
{
    throw makeError(CodeNotUpdatable, OviAPI::Phrase::DbDetailNotOneTable);
}

KeyedRows::KeyedRows(std::shared_ptr<Session> session, KeyedText text, RowKeys keys)
    : m_session(std::move(session))
    , m_text(std::move(text))
    , m_keys(std::move(keys))
    , m_count(static_cast<int64_t>(m_keys.size()))
    , m_current(m_blocks.data())
{
    const size_t width = m_text.columns.size() + (m_text.key.version.empty() ? 0 : 1);
    for (Block& block : m_blocks)
        block.rows = RowBlock(width);
    m_changed = RowBlock(width);
}

bool KeyedRows::use(int64_t row)
{
    m_current->lastUse = ++m_clock;
    m_row = row;
    const int place = m_current->places[static_cast<size_t>(row - m_current->first)];
    setPlace(m_keys.isGone(static_cast<size_t>(row)) ? -1 : place);
    return m_place >= 0;
}

void KeyedRows::setPlace(int place)
{
    m_place = place;
    if (place >= 0)
        standOn(m_current->rows, static_cast<size_t>(place));
    else
        standNowhere();
}

bool KeyedRows::findLoaded(int64_t row)
{
    const uint64_t changes = m_session->changes();
    const auto holds = [&](const Block& block) {
        return block.holds(row) && block.changes == changes;
    };
    if (holds(*m_current))
        return true;
    const auto at = std::find_if(m_blocks.begin(), m_blocks.end(), holds);
    if (at == m_blocks.end())
        return false;
    m_current = &*at;
    return true;
}

void KeyedRows::load(int64_t row, Driver& driver)
{
    const bool loaded = !m_current->places.empty();
    const bool readingOn = loaded && row == m_current->end();
    const bool readingBack = loaded && row == m_current->first - 1;
    m_size = readingOn || readingBack ? std::min(m_size * 2, largeBlock) : smallBlock;
    const bool endsHere = readingBack || row == m_count - 1;
    const int64_t first = endsHere ? std::max<int64_t>(row + 1 - m_size, 0) : row;
    const int64_t size = std::min(m_size, (endsHere ? row + 1 : m_count) - first);

    Block& block =
        *std::min_element(m_blocks.begin(), m_blocks.end(),
                          [](const Block& a, const Block& b) { return a.lastUse < b.lastUse; });
    block.rows.clear();
    std::vector<int> places = std::move(block.places);
    block.places.clear(); // holds nothing until all was read
    places.assign(static_cast<size_t>(size), -1);
    block.first = first;
    block.changes = m_session->changes();
    block.settled = !driver.inTransaction();
    driver.readRows(m_text, m_keys, static_cast<size_t>(first), block.rows, places);
    if (row >= first + static_cast<int64_t>(places.size())) { // long rows: begin at the wanted one
        block.rows.clear();
        places.assign(1, -1);
        block.first = row;
        driver.readRows(m_text, m_keys, static_cast<size_t>(row), block.rows, places);
    }
    block.places = std::move(places);
    m_current = &block;
}

bool KeyedRows::seek(int64_t row)
{
    standNowhere();
    if (!findLoaded(row)) {
        const Session::Use driver(*m_session);
        load(row, *driver);
    }
    return use(row);
}

bool KeyedRows::seek(int64_t row, Driver& driver)
{
    standNowhere();
    if (!findLoaded(row))
        load(row, driver);
    return use(row);
}

Value KeyedRows::read(size_t)
{
    throw makeError(CodeRowGone);
}

size_t KeyedRows::piece(size_t column, uint64_t offset, void* buffer, size_t size)
{
    const Session::Use driver(*m_session);
    return driver->readPiece(m_text, m_keys, static_cast<size_t>(m_row), column, offset, buffer,
                             size);
}

void KeyedRows::modify(const RowStatement& statement, Driver& driver)
{
    if (!isThere())
        throw makeError(CodeRowGone);
    m_changed.clear();
    const bool inTransaction = driver.inTransaction();
    const bool isSettled =
        m_current->settled && !inTransaction && m_current->changes == m_session->changes();
    try {
        driver.modifyRow(
            m_text, m_keys, static_cast<size_t>(m_row), statement,
            {m_current->rows, static_cast<size_t>(m_place), isSettled, m_changed, m_plan});
    } catch (const DorX& x) {
        if (x.code() == CodeRowChanged || x.code() == CodeRowGone) {
            m_current->changes = outdated;
            forgetCopies();
            m_plan = nullptr; // what it knows of the table may be old
        }
        throw;
    }
    m_current->settled = m_current->settled && !inTransaction;
    const uint64_t changes = m_session->countChange();
    for (Block& block : m_blocks) {
        if (block.changes == changes - 1)
            block.changes = changes;
    }
    forgetCopies();
    if (statement.deletes) {
        setPlace(-1);
        return;
    }
    if (m_changed.rows() > 0) {
        replaceRow(m_changed, 0);
        return;
    }
    try {
        readAnew(driver);
    } catch (const DorX&) {
        m_current->changes = outdated; // the change was made; the next seek tells what is wrong
    }
}

bool KeyedRows::refresh()
{
    if (m_keys.isGone(static_cast<size_t>(m_row)))
        return false;
    const Session::Use driver(*m_session);
    driver->probe(); // an answer that was asked for ahead is not new
    standNowhere();
    m_current->settled = m_current->settled && !driver->inTransaction();
    readAnew(*driver);
    forgetCopies();
    return m_place >= 0;
}

// Blocks may overlap: what is in the others of the current row is old.
void KeyedRows::forgetCopies()
{
    for (Block& block : m_blocks) {
        if (&block != m_current && block.holds(m_row))
            block.changes = outdated;
    }
}

// Reads the current row alone, into the current block.
void KeyedRows::readAnew(Driver& driver)
{
    RowBlock row(m_current->rows.columns());
    std::vector<int> places(1, -1);
    driver.readRows(m_text, m_keys, static_cast<size_t>(m_row), row, places);
    replaceRow(row, places[0]);
}

// place: of the row in `from`, -1 where it has gone.
void KeyedRows::replaceRow(const RowBlock& from, int place)
{
    setPlace(place < 0 ? -1 : copyRow(from, static_cast<size_t>(place), m_current->rows));
    m_current->places[static_cast<size_t>(m_row - m_current->first)] = m_place;
}

} // namespace DorCPP
