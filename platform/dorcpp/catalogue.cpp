#include <dorcpp/catalogue.h>

#include <dorcpp/session.h>

namespace DorCPP {

std::string tableListText(const DorConnect& connection)
{
    return connection.session()->tableListText();
}

} // namespace DorCPP
