// The base of forms that work on a database connection.
#pragma once

#include "app/export.h"
#include "app/extform.h"

namespace DorCPP {
class DorConnect;
}

// Points to the connection, which must outlive its use by the form.
class OVIEXT_API WExtConnectedForm : public WExtForm {
public:
    WExtConnectedForm();
    WExtConnectedForm(int id, OviAPI::ResourceManager* rm, DorCPP::DorConnect* connect);
    ~WExtConnectedForm() override;

    DorCPP::DorConnect* getConnect() const { return connect; }
    // A form that runs asynchronous statements stops them here; false when it could not.
    virtual bool StopAsync(bool force);

protected:
    DorCPP::DorConnect* connect = nullptr;
};
