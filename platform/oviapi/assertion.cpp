#include <oviapi/assertion.h>

#include <cstdio>
#include <cstdlib>

namespace OviAPI {

void assertionFailed(const char* text, const char* source, int line, const char* function)
{
    std::fprintf(stderr, "%s:%d: %s: Assertion `%s' failed.\n", source, line, function, text);
    std::fflush(stderr);
    std::abort();
}

} // namespace OviAPI
