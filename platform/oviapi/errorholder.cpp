#include <oviapi/errorholder.h>

#include <algorithm>

namespace OviAPI {

aCErrorHolder::~aCErrorHolder() = default;

void aCErrorHolder::setRowError(long row, long code, long systemCode, const wchar_t* text)
{
    if (m_errorKind == NoError && code == 0 && systemCode == 0) {
        clearRowError(row);
        return;
    }
    auto [it, added] = m_errors.try_emplace(row);
    it->second = {m_errorKind, code, systemCode, text ? text : L""};
    if (!added)
        return;
    m_order.push_back(row);
    if (m_order.size() > maxRows) {
        m_errors.erase(m_order.front());
        m_order.pop_front();
    }
}

const aCErrorHolder::RowError* aCErrorHolder::getRowError(long row) const
{
    const auto it = m_errors.find(row);
    return it == m_errors.end() ? nullptr : &it->second;
}

void aCErrorHolder::clearRowError(long row)
{
    if (m_errors.erase(row) != 0)
        std::erase(m_order, row);
}

void aCErrorHolder::clearRowErrors()
{
    m_errors.clear();
    m_order.clear();
}

} // namespace OviAPI
