// Locales for tests.
#pragma once

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <string>

// The process locale for the life of the object.
class ScopedLocale {
public:
    explicit ScopedLocale(const char* name, int category = LC_ALL)
        : m_category(category)
        , m_before(std::setlocale(category, nullptr))
        , m_set(std::setlocale(category, name) != nullptr)
    {
    }
    ~ScopedLocale() { std::setlocale(m_category, m_before.c_str()); }
    ScopedLocale(const ScopedLocale&) = delete;
    ScopedLocale& operator=(const ScopedLocale&) = delete;

    bool isSet() const { return m_set; }

private:
    int m_category;
    std::string m_before;
    bool m_set;
};

// A variable of the environment for the life of the object; null takes it away.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const char* value)
        : m_name(name)
    {
        if (const char* before = std::getenv(name)) {
            m_had = true;
            m_before = before;
        }
        set(value);
    }
    ~ScopedVariable() { set(m_had ? m_before.c_str() : nullptr); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    void set(const char* value)
    {
        if (value)
            ::setenv(m_name.c_str(), value, 1);
        else
            ::unsetenv(m_name.c_str());
    }

    std::string m_name;
    std::string m_before;
    bool m_had = false;
};
