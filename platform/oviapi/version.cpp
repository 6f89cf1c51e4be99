#include <oviapi/version.h>

namespace OviAPI {

const char* version()
{
    return OVI_VERSION;
}

} // namespace OviAPI
