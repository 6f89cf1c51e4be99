// Database errors as errors of rows.
#include "data/dordataset.h"

#include <algorithm>
#include <optional>

#include <dorcpp/charset.h>

using DorCPP::DorX;

namespace {

constexpr int messageSize = 65536; // bytes
constexpr size_t maxUnread = 1000; // rows

// Codes from 2000 to 3000 are about a statement or a row, whatever the system says to them.
constexpr long harmlessFirst = 2000;
constexpr long harmlessLast = 3000;

struct CodeRange {
    long first;
    long last;
};

// Codes after which the session, the server or the file cannot be used any longer.
constexpr CodeRange criticalCodes[] = {
    {10, 12},     {16, 17},     {19, 20},     {73, 78},     {80, 82},     {98, 98},
    {101, 105},   {107, 117},   {121, 121},   {130, 134},   {136, 137},   {140, 142},
    {300, 304},   {400, 402},   {501, 513},   {600, 607},   {700, 708},   {1000, 1016},
    {1043, 1046}, {1061, 1064}, {1069, 1069}, {2202, 2202}, {4000, 4447}, {4500, 4500},
    {6712, 6714}, {7030, 7033}, {8888, 8888},
};

int kindOfCode(long code, bool modifying)
{
    switch (code) {
    case 0:
        return OviAPI::aCErrorHolder::NoError;
    case DorCPP::CodeNoRow:
    case DorCPP::CodeRowGone:
        return OviAPI::aCErrorHolder::NoSuchRow;
    case DorCPP::CodeDeadlock:
    case DorCPP::CodeLocked:
        return OviAPI::aCErrorHolder::Locked;
    case DorCPP::CodeRefused:
        return modifying ? OviAPI::aCErrorHolder::Refused : OviAPI::aCErrorHolder::OtherError;
    case DorCPP::CodeRowChanged:
        return OviAPI::aCErrorHolder::Refused;
    default:
        return OviAPI::aCErrorHolder::OtherError;
    }
}

std::wstring messageOf(const DorX& x)
{
    std::string text(messageSize, '\0');
    const int length = x.getMessage(text.data(), messageSize);
    return DorCPP::widen(std::string_view(text).substr(0, static_cast<size_t>(length)),
                         DorCPP::getStdCharset());
}

} // namespace

bool xCDorvexDataSet::ErrorHandler(int operation, const DorX& x, long row)
{
    SetErrorKind(kindOfCode(x.code(), operation == Modifying));
    if (IsCriticalError(x.code(), x.systemCode()))
        SetErrorKind(Critical);
    m_lastError = GetErrorKind() == NoError ? std::wstring() : messageOf(x);
    setRowError(row, x.code(), x.systemCode(), m_lastError.c_str());
    if (operation == Modifying)
        m_unread.erase(row);
    else
        m_unread.insert(row);
    if (m_unread.size() > maxUnread)
        m_unread.erase(m_unread.upper_bound(0));
    return !RaisesErrors();
}

bool xCDorvexDataSet::IsCriticalError(long code, long systemCode)
{
    if (systemCode != 0 && (code < harmlessFirst || code > harmlessLast))
        return true;
    return std::any_of(std::begin(criticalCodes), std::end(criticalCodes),
                       [=](CodeRange range) { return code >= range.first && code <= range.last; });
}

// A row that can be read again has no error; one that was not stored keeps it.
void xCDorvexDataSet::errorIsOver(long row)
{
    if (!m_unread.empty() && m_unread.erase(row) != 0)
        clearRowError(row);
}

// The rows have new numbers: nothing is known of them any longer. What could not be stored into the
// dataset as a whole stays.
void xCDorvexDataSet::forgetRowErrors()
{
    std::optional<RowError> whole;
    if (const RowError* error = getRowError(0); error && !m_unread.contains(0))
        whole = *error;
    clearRowErrors();
    m_unread.clear();
    if (!whole)
        return;
    const int kind = GetErrorKind();
    SetErrorKind(whole->kind);
    setRowError(0, whole->code, whole->systemCode, whole->text.c_str());
    SetErrorKind(kind);
}
