#include "explorer/textlookup.h"

#include <array>

#include <oviapi/application.h>
#include <oviapi/resourcemanager.h>
#include <oviapi/text.h>

std::wstring textOf(TextId id)
{
    std::array<wchar_t, 4096> text{};
    OviAPI::Application* application = OviAPI::Application::instance();
    if (!application || !application->loadRRSString(id, text.data(), static_cast<int>(text.size()),
                                                    OviAPI::ResourceManager::CurrentLanguage))
        return {};
    return text.data();
}

std::wstring textOf(TextId id, std::wstring_view argument)
{
    return OviAPI::substitute(textOf(id), argument);
}

std::wstring groupedNumber(long number)
{
    constexpr size_t group = 3;
    constexpr wchar_t noBreakSpace = 0xA0;
    std::wstring digits = std::to_wstring(number);
    const size_t first = number < 0 ? 1 : 0;
    for (size_t at = digits.size(); at > first + group;) {
        at -= group;
        digits.insert(at, 1, noBreakSpace);
    }
    return digits;
}
