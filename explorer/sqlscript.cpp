#include "explorer/sqlscript.h"

#include <cstdio>

#include <oviapi/srctokens.h>
#include <oviapi/text.h>

#include "explorer/textlookup.h"

namespace {

// Puts statements together from tokens.
class Splitter {
public:
    void line(int number, std::wstring_view text)
    {
        std::vector<OviAPI::SrcToken> tokens;
        m_state = m_tokenizer.read(text, m_state, tokens);
        for (const OviAPI::SrcToken& token : tokens) {
            if (token.kind == OviAPI::SrcKind::Comment)
                continue;
            const bool ends = m_splitter.feed(text, token);
            if (ends)
                finish();
            else
                take({{number, token.from + 1}, {number, token.to + 1}});
        }
    }
    std::vector<OviAPI::SrcRange> end()
    {
        finish();
        return std::move(m_statements);
    }

private:
    void take(const OviAPI::SrcRange& token)
    {
        if (m_open.isEmpty())
            m_open = token;
        m_open.to = token.to;
    }
    void finish()
    {
        if (!m_open.isEmpty())
            m_statements.push_back(m_open);
        m_open = {};
    }

    OviAPI::SrcTokenizer m_tokenizer;
    OviAPI::SrcSplitter m_splitter;
    OviAPI::SrcState m_state = 0;
    OviAPI::SrcRange m_open;
    std::vector<OviAPI::SrcRange> m_statements;
};

} // namespace

std::vector<OviAPI::SrcRange> statementsIn(std::wstring_view text)
{
    Splitter splitter;
    int number = 0;
    for (size_t start = 0; start <= text.size();) {
        const size_t end = std::min(text.find(L'\n', start), text.size());
        splitter.line(++number, text.substr(start, end - start));
        start = end + 1;
    }
    return splitter.end();
}

OviAPI::SrcPosition faultPosition(std::wstring_view statement, OviAPI::SrcPosition start, int byte)
{
    OviAPI::SrcPosition position = start;
    size_t left = byte > 0 ? static_cast<size_t>(byte) - 1 : 0;
    for (const wchar_t c : statement) {
        const size_t size = OviAPI::wideToUtf8({&c, 1}).size();
        if (size > left)
            break;
        left -= size;
        if (c == L'\n')
            position = {position.line + 1, 1};
        else
            ++position.column;
    }
    return position;
}

std::wstring durationText(int64_t milliseconds)
{
    constexpr int64_t second = 1000;
    constexpr int64_t minute = 60 * second;
    constexpr int64_t hour = 60 * minute;
    std::wstring text;
    if (milliseconds >= hour)
        text += textOf(TextDurationHours, std::to_wstring(milliseconds / hour)) + L" ";
    if (milliseconds >= minute)
        text += textOf(TextDurationMinutes, std::to_wstring(milliseconds % hour / minute)) + L" ";
    wchar_t seconds[32];
    std::swprintf(seconds, std::size(seconds), L"%d.%03d",
                  static_cast<int>(milliseconds % minute / second),
                  static_cast<int>(milliseconds % second));
    return text + textOf(TextDurationSeconds, seconds);
}
