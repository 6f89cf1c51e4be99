#include <dorcpp/types.h>

#include <charconv>
#include <chrono>
#include <cstring>
#include <thread>

#include <dorcpp/worker.h>

namespace DorCPP {

void DelayThread(int milliseconds)
{
    if (milliseconds <= 0)
        std::this_thread::yield();
    else
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

double DecToDbl(const void* decimal, size_t length)
{
    const char* text = static_cast<const char*>(decimal);
    length = strnlen(text, length);
    if (length > 0 && *text == '+') {
        ++text;
        --length;
    }
    double number = 0;
    const auto [end, error] = std::from_chars(text, text + length, number);
    return error == std::errc() && end == text + length ? number : 0;
}

void setWakeUp(void (*function)())
{
    Workers::setWakeUp(function);
}

} // namespace DorCPP
