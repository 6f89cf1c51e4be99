// What the SQL window remembers between runs.
#pragma once

#include <string>
#include <vector>

// The text of the editor, and the statements executed last, the newest first and each once. Without
// the rows that they gave.
class SqlHistory {
public:
    static constexpr size_t Most = 50;

    // Puts a statement in front; the oldest beyond the most goes.
    void add(const std::wstring& statement);
    void clear() { m_statements.clear(); }
    const std::vector<std::wstring>& statements() const { return m_statements; }

    void setText(const std::wstring& text) { m_text = text; }
    const std::wstring& text() const { return m_text; }

    // Reads the file; what is missing or damaged is left as it is.
    void load(const std::wstring& path);
    // Replaces the file as a whole, for its owner alone. False when it cannot be written.
    bool save(const std::wstring& path) const;

    bool operator==(const SqlHistory&) const = default;

private:
    std::wstring m_text;
    std::vector<std::wstring> m_statements;
};

// A statement in one line of so many characters at most, for a menu.
std::wstring shortStatement(const std::wstring& statement, size_t characters);
