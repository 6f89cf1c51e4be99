#include "data/dorconnect.h"

#include <cstring>
#include <memory>

#include <dorcpp/cursor.h>

namespace {

// Takes the place of what was there, to its last byte.
template<size_t size>
void keep(char (&to)[size], const char* from)
{
    char text[size] = {}; // from may lie in the target
    if (from)
        std::strncpy(text, from, size - 1);
    std::memcpy(to, text, size);
    explicit_bzero(text, size);
}

const char* either(const char* given, const char* kept)
{
    return given ? given : kept;
}

} // namespace

xDorConnect::xDorConnect() = default;

xDorConnect::~xDorConnect()
{
    for (char(*text)[stringSize] : {&m_first, &m_third, &m_second, &m_fourth})
        explicit_bzero(*text, stringSize);
}

int xDorConnect::CreateCS(const char* a, const char* b, const char* c, const char* d, int mode,
                          bool flag1, bool flag2)
{
    keep(m_first, a);
    keep(m_third, c);
    keep(m_second, b);
    keep(m_fourth, d);
    return createCS(m_first, m_second, m_third, m_fourth, mode, flag1, flag2);
}

xDorConnect* xDorConnect::Duplicate(const char* a, const char* b, const char* c, const char* d,
                                    int m) const
{
    auto copy = std::make_unique<xDorConnect>();
    copy->CreateCS(either(a, m_first), either(b, m_second), either(c, m_third), either(d, m_fourth),
                   m == -1 ? mode(false) : m, false, true);
    return copy.release();
}

bool xDorConnect::isAlive() const
{
    try {
        DorCPP::DorCursor cursor;
        cursor.create(*this, 0, nullptr, true);
        return true;
    } catch (...) {
        return false; // whatever it is, the server has not answered
    }
}

OviAPI::SlotResult xDorConnect::onTimer(OviAPI::Object*)
{
    isAlive();
    return 0;
}
