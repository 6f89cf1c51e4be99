#include "explorer/rowwriter.h"

#include <oviapi/text.h>

namespace {

template<class Number>
std::string bytesOf(Number value)
{
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

} // namespace

RowWriter::RowWriter(const DorCPP::DorConnect& connection, DorCPP::DorCursor& cursor,
                     const char* sql)
    : m_cursor(cursor)
{
    m_statement.create(connection, sql, true);
}

RowWriter& RowWriter::integer(std::optional<int64_t> value)
{
    return value ? bind(DorCPP::TypeBigint, bytesOf(*value)) : null(DorCPP::TypeBigint);
}

RowWriter& RowWriter::real(std::optional<double> value)
{
    return value ? bind(DorCPP::TypeDouble, bytesOf(*value)) : null(DorCPP::TypeDouble);
}

RowWriter& RowWriter::boolean(bool value)
{
    return bind(DorCPP::TypeBoolean, std::string(1, value ? '\1' : '\0'));
}

RowWriter& RowWriter::date(const std::optional<CalendarTime>& value)
{
    constexpr int64_t microsPerSecond = 1000000;
    return value ? bind(DorCPP::TypeDate, bytesOf(secondsOf(*value) * microsPerSecond))
                 : null(DorCPP::TypeDate);
}

// In UTF-16, which holds every character in every locale.
RowWriter& RowWriter::text(std::string_view utf8)
{
    if (utf8.empty())
        return null(DorCPP::TypeNchar);
    const std::u16string units = OviAPI::wideToUtf16(OviAPI::utf8ToWide(utf8));
    return bind(DorCPP::TypeNchar,
                {reinterpret_cast<const char*>(units.data()), units.size() * sizeof(char16_t)});
}

RowWriter& RowWriter::decimal(std::string_view digits)
{
    return digits.empty() ? null(DorCPP::TypeDecimal)
                          : bind(DorCPP::TypeDecimal, std::string(digits));
}

RowWriter& RowWriter::bytes(std::string_view value)
{
    return bind(DorCPP::TypeByte, std::string(value));
}

void RowWriter::store()
{
    m_cursor.execute(m_statement, &m_binds);
    m_binds.clear();
    m_values.clear();
    m_parameter = 0;
}

RowWriter& RowWriter::bind(int type, std::string bytes)
{
    const std::string& kept = m_values.emplace_back(std::move(bytes));
    m_binds.bind(++m_parameter, {type, kept.data(), kept.size(), 0});
    return *this;
}

RowWriter& RowWriter::null(int type)
{
    m_binds.bind(++m_parameter, {type, nullptr, 0, 1});
    return *this;
}
