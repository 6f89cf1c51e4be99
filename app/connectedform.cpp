#include "app/connectedform.h"

WExtConnectedForm::WExtConnectedForm() = default;

WExtConnectedForm::WExtConnectedForm(int id, OviAPI::ResourceManager* rm,
                                     DorCPP::DorConnect* connection)
    : connect(connection)
{
    init(id, rm);
}

WExtConnectedForm::~WExtConnectedForm() = default;

bool WExtConnectedForm::StopAsync(bool)
{
    return true;
}
