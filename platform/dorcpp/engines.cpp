#include <dorcpp/engines.h>

namespace DorCPP {

const std::vector<Engine>& engines()
{
    static const std::vector<Engine> all{
        {"sqlite", "SQLite", Engine::File},
    };
    return all;
}

} // namespace DorCPP
