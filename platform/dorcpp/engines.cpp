#include <dorcpp/driver.h>
#include <dorcpp/engines.h>

namespace DorCPP {

const std::vector<Engine>& engines()
{
    static const std::vector<Engine> all{
        {"sqlite", "SQLite", Engine::File},
        {"postgresql", "PostgreSQL", Engine::Server},
    };
    return all;
}

std::unique_ptr<Driver> openDriver(const Target& target)
{
    return target.engine == SqlDialect::Postgresql ? openPostgresql(target) : openSqlite(target);
}

} // namespace DorCPP
