#include <xmlutils/document.h>

#include <xmlutils/limits.h>

namespace XMLUtils {

bool hasTooManyAttributes(std::string_view document)
{
    // A zero byte is the other half of a UTF-16 character.
    constexpr std::string_view passed(" \t\r\n\0", 5);
    size_t count = 0;
    bool isBehindEquals = false;
    for (const char c : document) {
        if (isBehindEquals && (c == '"' || c == '\''))
            ++count;
        isBehindEquals = c == '=' || (isBehindEquals && passed.find(c) != std::string_view::npos);
    }
    return count > maxAttributes;
}

} // namespace XMLUtils
