#include "app/extdialog.h"

WExtDialog::WExtDialog(int id, OviAPI::ResourceManager* rm)
{
    init(id, rm);
}

WExtDialog::~WExtDialog() = default;

bool WExtDialog::create()
{
    if (!isCreated())
        OviAPI::connect<&OviAPI::VisualObject::onKeyDown>(*this, *this,
                                                          &WExtDialog::onDialogKeyDown);
    return WExtForm::create();
}

OviAPI::SlotResult WExtDialog::onDialogKeyDown(OviAPI::Object*, OviAPI::VirtualKey key)
{
    if (key.getKeyboardKey() == OviAPI::KeyEscape)
        close();
    return 0;
}
