// The base of the library's dialogs.
#pragma once

#include <oviapi/dialog.h>
#include <oviapi/virtualkey.h>

#include "app/export.h"
#include "app/extform.h"

// A dialog that Escape closes as its close box does.
class OVIEXT_API WExtDialog : public virtual WExtForm, public virtual OviAPI::WDialog {
public:
    WExtDialog(int id, OviAPI::ResourceManager* rm);
    ~WExtDialog() override;

    bool create() override;
    OviAPI::SlotResult onDialogKeyDown(OviAPI::Object* sender, OviAPI::VirtualKey key);
};
