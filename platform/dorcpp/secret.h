// Text that leaves nothing behind.
#pragma once

#include <cstring>
#include <string>
#include <string_view>
#include <utility>

namespace DorCPP {

// A password, or a text that may hold one. Its bytes are overwritten when they are no longer
// needed.
class Secret {
public:
    Secret() = default;
    explicit Secret(std::string_view text)
        : m_text(text)
    {
    }
    Secret(const Secret&) = default;
    Secret(Secret&& other) noexcept { swap(other); }
    Secret& operator=(Secret other) noexcept
    {
        swap(other);
        return *this;
    }
    ~Secret() { explicit_bzero(m_text.data(), m_text.capacity()); }

    const char* text() const { return m_text.c_str(); }
    bool empty() const { return m_text.empty(); }

private:
    void swap(Secret& other) noexcept { m_text.swap(other.m_text); }

    std::string m_text;
};

} // namespace DorCPP
