// Cutting text files into lines and fields.
#pragma once

#include <string_view>

// Text without blanks, tabs and carriage returns at its ends.
inline std::string_view trimmed(std::string_view text)
{
    const size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// Takes the piece up to the separator off the front of the text; the whole text when there is none.
inline std::string_view takeUntil(std::string_view& text, char separator)
{
    const size_t end = text.find(separator);
    const std::string_view piece = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return piece;
}

// Calls use(line) for each line, without its line feed.
template<class Use>
void forEachLine(std::string_view text, Use use)
{
    while (!text.empty())
        use(takeUntil(text, '\n'));
}
