#include "explorer/foreignkeys.h"

#include <algorithm>
#include <cwchar>
#include <set>

#include <dorcpp/catalogue.h>
#include <oviapi/text.h>

#include "explorer/sqltext.h"

namespace {

constexpr int lookInterval = 15; // ms

// The columns of the list of foreign keys.
enum ListColumn : int {
    NameColumn = 1,
    DetailSchema,
    DetailName,
    DetailColumn,
    MasterSchema,
    MasterName,
    MasterColumn,
    PlaceColumn
};

// Reads texts of the current row of a cursor.
class RowReader {
public:
    explicit RowReader(DorCPP::DorCursor& cursor)
        : m_cursor(cursor)
    {
    }
    std::wstring text(int column)
    {
        size_t length = 0;
        m_cursor.getData(column, DorCPP::TypeNchar, m_units.data(),
                         m_units.size() * sizeof m_units[0], nullptr, &length);
        return OviAPI::utf16ToWide({m_units.data(), length / sizeof m_units[0]});
    }
    int number(int column)
    {
        return static_cast<int>(std::wcstol(text(column).c_str(), nullptr, 10));
    }

private:
    DorCPP::DorCursor& m_cursor;
    std::vector<char16_t> m_units = std::vector<char16_t>(32768);
};

// The columns of a key stand one after the other.
std::vector<ForeignKey> readKeys(DorCPP::DorCursor& cursor)
{
    std::vector<ForeignKey> keys;
    RowReader row(cursor);
    const int64_t count = cursor.selectRowCount();
    for (int64_t i = 1; i <= count; ++i) {
        cursor.fetch(DorCPP::FetchAbsolute, i);
        if (row.number(PlaceColumn) == 1)
            keys.push_back({row.text(NameColumn),
                            {row.text(DetailName), false, row.text(DetailSchema)},
                            {row.text(MasterName), false, row.text(MasterSchema)},
                            {}});
        if (!keys.empty())
            keys.back().columns.push_back({row.text(DetailColumn), row.text(MasterColumn)});
    }
    return keys;
}

// "packages (section)"; the schema stands in front where it is another one than the master's.
std::wstring captionOf(const ForeignKey& key)
{
    std::wstring caption = key.detail.name;
    if (key.detail.schema != key.master.schema)
        caption = key.detail.schema + L"." + caption;
    std::wstring columns;
    for (const ForeignKey::Pair& pair : key.columns)
        columns += (columns.empty() ? L"" : L", ") + pair.detail;
    return caption + L" (" + columns + L")";
}

} // namespace

ForeignKeys::ForeignKeys()
    : m_timer(lookInterval)
{
    OviAPI::connect<&OviAPI::WTimer::onTimer>(m_timer, *this, &ForeignKeys::look);
}

ForeignKeys::~ForeignKeys()
{
    stop();
}

bool ForeignKeys::onForeignKeys()
{
    return false;
}

void ForeignKeys::start(const DorCPP::DorConnect& connection)
{
    stop();
    m_keys.clear();
    m_error = DorCPP::DorX();
    try {
        m_statement = std::make_unique<BackgroundStatement>(
            connection, OviAPI::utf8ToWide(DorCPP::foreignKeyListText(connection)),
            DorCPP::ModeReadOnly);
    } catch (const DorCPP::DorX& x) {
        m_error = x;
    }
    m_timer.start(); // also after an error: it is told from the event loop
}

void ForeignKeys::stop()
{
    m_timer.stop();
    m_statement.reset();
}

OviAPI::SlotResult ForeignKeys::look(OviAPI::Object*)
{
    if (m_statement && !m_statement->isDone())
        return 1;
    m_timer.stop();
    if (m_statement)
        takeResult();
    OviAPI::dispatch<&ForeignKeys::onForeignKeys>(*this);
    return 1;
}

void ForeignKeys::takeResult()
{
    const std::unique_ptr<BackgroundStatement> statement = std::move(m_statement);
    try {
        m_keys = readKeys(statement->result());
    } catch (const DorCPP::DorX& x) {
        m_error = x;
    }
}

std::vector<DetailTable> ForeignKeys::detailsOf(const DatabaseTable& master) const
{
    std::vector<DetailTable> details;
    std::set<std::wstring> used;
    for (const ForeignKey& key : m_keys) {
        if (key.master != master)
            continue;
        const std::wstring caption = captionOf(key);
        std::wstring own = caption;
        for (int number = 2; !used.insert(own).second; ++number)
            own = caption + L" " + std::to_wstring(number);
        details.push_back({key, own});
    }
    return details;
}

const ForeignKey* ForeignKeys::masterOf(const DatabaseTable& detail,
                                        const std::wstring& column) const
{
    const ForeignKey* found = nullptr;
    for (const ForeignKey& key : m_keys) {
        const bool refers =
            key.detail == detail &&
            std::any_of(key.columns.begin(), key.columns.end(),
                        [&](const ForeignKey::Pair& pair) { return pair.detail == column; });
        if (refers && (!found || key.columns.size() < found->columns.size()))
            found = &key;
    }
    return found;
}

std::wstring detailQueryText(const ForeignKey& key)
{
    std::vector<std::wstring> columns;
    for (const ForeignKey::Pair& pair : key.columns)
        columns.push_back(pair.detail);
    return selectWhereText(tableReference(key.detail.schema, key.detail.name), columns);
}
