#include "explorer/databasesession.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <cwctype>
#include <filesystem>
#include <system_error>
#include <tuple>

#include <dorcpp/catalogue.h>
#include <dorcpp/cursor.h>
#include <oviapi/text.h>

#include <sys/stat.h>
#include <unistd.h>

#include "explorer/textlookup.h"

namespace fs = std::filesystem;

namespace {

constexpr std::string_view fileScheme = "sqlite:";

std::wstring systemWords(int error)
{
    return OviAPI::localeToWide(std::generic_category().message(error));
}

// Looks at the file before the engine does: a pipe would block it, and its words for a folder or a
// missing file are less plain.
void checkFile(const std::string& path)
{
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        const int error = errno;
        const bool missing = error == ENOENT || error == ENOTDIR;
        throw OpenFailure(missing           ? TextErrorMissing
                          : error == EACCES ? TextErrorPermission
                                            : TextErrorOther,
                          missing ? std::wstring() : systemWords(error));
    }
    if (S_ISDIR(status.st_mode))
        throw OpenFailure(TextErrorFolder, {});
    if (!S_ISREG(status.st_mode))
        throw OpenFailure(TextErrorNotFile, {});
    if (access(path.c_str(), R_OK) != 0)
        throw OpenFailure(TextErrorPermission, systemWords(errno));
}

// A client of a server takes no longer texts; they would be cut.
void checkLengths(const std::string& user, const std::string& password, const std::string& name)
{
    constexpr size_t longest = 255; // bytes
    if (user.size() > longest)
        throw OpenFailure(TextErrorLongUser, {});
    if (password.size() > longest)
        throw OpenFailure(TextErrorLongPassword, {});
    if (name.size() > longest)
        throw OpenFailure(TextErrorLongAddress, {});
}

TextId reasonOf(const DorCPP::DorX& x)
{
    switch (x.code()) {
    case DorCPP::CodeCorruptFile:
        return TextErrorNotDatabase;
    case DorCPP::CodeLocked:
        return TextErrorLocked;
    default:
        return TextErrorOther;
    }
}

// The columns of the list of tables.
enum ListColumn : int { SchemaColumn = 1, NameColumn = 2, KindColumn = 3 };

std::wstring lowered(std::wstring text)
{
    for (wchar_t& c : text)
        c = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c)));
    return text;
}

// By schema; tables first, then views; by name, whatever the case.
bool standsBefore(const DatabaseTable& a, const DatabaseTable& b)
{
    return std::make_tuple(a.schema, a.isView, lowered(a.name), a.name) <
           std::make_tuple(b.schema, b.isView, lowered(b.name), b.name);
}

std::wstring textOfColumn(DorCPP::DorCursor& cursor, int column)
{
    std::vector<char16_t> units(32768);
    size_t length = 0;
    cursor.getData(column, DorCPP::TypeNchar, units.data(), units.size() * sizeof units[0], nullptr,
                   &length);
    return OviAPI::utf16ToWide({units.data(), length / sizeof units[0]});
}

} // namespace

OpenFailure::OpenFailure(const DorCPP::DorX& error)
    : m_reason(reasonOf(error))
    // NOLINTNEXTLINE(bugprone-throw-keyword-missing): the copy is kept, nothing is thrown
    , m_error(error)
{
}

std::wstring OpenFailure::details() const
{
    return m_error.code() == 0 ? m_details : messageOf(m_error);
}

std::string databasePath(const std::string& name)
{
    if (name.compare(0, fileScheme.size(), fileScheme) == 0) {
        const std::string path = name.substr(fileScheme.size());
        return path.substr(0, path.rfind("?mode="));
    }
    return DorCPP::isServerName(name) ? std::string() : name;
}

std::wstring textOf(const OpenFailure& failure)
{
    std::wstring text = textOf(failure.reason());
    const std::wstring details = failure.details();
    if (!details.empty())
        text += L"\n\n" + textOf(TextErrorDetails, details);
    return text;
}

std::wstring messageOf(const DorCPP::DorX& x)
{
    std::array<char, 4096> text{};
    x.getMessage(text.data(), static_cast<int>(text.size()));
    return OviAPI::localeToWide(text.data());
}

DatabaseSession::DatabaseSession(const std::string& name)
    : m_name(name)
    , m_path(databasePath(name))
{
    open("", "", "timeout=1000", false);
}

DatabaseSession::DatabaseSession(const Connection& connection, const Secret& password)
    : m_name(connection.databaseName())
    , m_path(OviAPI::wideToLocale(connection.path))
{
    if (!connection.isFile() && connection.host.empty())
        m_name.clear();
    const std::string user = OviAPI::wideToLocale(connection.user);
    std::string narrow = OviAPI::wideToLocale(password.text());
    try {
        if (!connection.isFile())
            checkLengths(user, narrow, m_name);
        open(user.c_str(), narrow.c_str(), connection.clientOptions().c_str(), connection.verify);
    } catch (...) {
        wipe(narrow);
        throw;
    }
    wipe(narrow);
}

void DatabaseSession::open(const char* user, const char* password, const char* options, bool verify)
{
    if (m_name.empty())
        throw OpenFailure(TextErrorEmptyName, {});
    if (!m_path.empty()) {
        checkFile(m_path);
        const std::string absolute = fs::absolute(m_path).lexically_normal().string();
        m_name.replace(m_name.find(m_path), m_path.size(), absolute);
        m_path = absolute;
    }
    try {
        m_connection.createCS(user, password, m_name.c_str(), options, 0, verify, true);
        readTables();
    } catch (const DorCPP::DorX& x) {
        throw OpenFailure(x);
    }
    m_name = DorCPP::withoutPasswords(m_name);
}

std::wstring DatabaseSession::displayName() const
{
    if (m_path.empty())
        return OviAPI::localeToWide(m_name);
    return OviAPI::localeToWide(fs::path(m_path).filename().string());
}

std::wstring DatabaseSession::displayPath() const
{
    return OviAPI::localeToWide(m_path.empty() ? m_name : m_path);
}

std::wstring DatabaseSession::connectionText() const
{
    const DorCPP::ConnectionInfo info = m_connection.info();
    // What a server says behind its number is about its packaging.
    const std::string version = info.version.substr(0, info.version.find(' '));
    std::wstring text = OviAPI::utf8ToWide(info.engine) + L" " + OviAPI::utf8ToWide(version);
    if (!info.host.empty())
        text += L", " + textOf(info.cipher.empty() ? TextStateNotEncrypted : TextStateEncrypted);
    if (info.readOnly)
        text += L", " + textOf(TextStateReadOnly);
    if (m_connection.inTransaction())
        text += L", " + textOf(TextStateTransaction);
    return text;
}

void DatabaseSession::execute(const char* sql)
{
    DorCPP::DorCursor cursor;
    cursor.create(m_connection, 0, nullptr, false);
    cursor.execute(sql);
}

void DatabaseSession::readTables()
{
    DorCPP::DorCursor cursor;
    cursor.create(m_connection, DorCPP::ModeReadOnly, nullptr, false);
    cursor.execute(DorCPP::tableListText(m_connection).c_str());
    std::vector<DatabaseTable> tables;
    const int64_t count = cursor.selectRowCount();
    for (int64_t row = 1; row <= count; ++row) {
        cursor.fetch(DorCPP::FetchAbsolute, row);
        tables.push_back({textOfColumn(cursor, NameColumn),
                          textOfColumn(cursor, KindColumn) == L"view",
                          textOfColumn(cursor, SchemaColumn)});
    }
    std::sort(tables.begin(), tables.end(), standsBefore);
    m_tables = std::move(tables);
}
