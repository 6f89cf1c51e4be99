#include <dorcpp/catalogue.h>

#include <dorcpp/session.h>

namespace DorCPP {

std::string tableListText(const DorConnect& connection)
{
    return connection.session()->tableListText();
}

std::string foreignKeyListText(const DorConnect& connection)
{
    return connection.session()->foreignKeyListText();
}

} // namespace DorCPP
