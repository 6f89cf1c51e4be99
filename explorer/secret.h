// Texts that leave no trace in the memory.
#pragma once

#include <cstring>
#include <string>
#include <utility>

// Overwrites the characters and empties the text.
template<class Character>
void wipe(std::basic_string<Character>& text)
{
    explicit_bzero(text.data(), text.size() * sizeof(Character));
    text.clear();
}

// A password, overwritten when the object goes.
class Secret {
public:
    Secret() = default;
    explicit Secret(std::wstring text)
        : m_text(std::move(text))
    {
    }
    ~Secret() { wipe(m_text); }
    Secret(const Secret&) = delete;
    Secret& operator=(const Secret&) = delete;

    const std::wstring& text() const { return m_text; }

private:
    std::wstring m_text;
};
