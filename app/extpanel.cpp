#include "app/extpanel.h"

WExtPanel::WExtPanel() = default;

WExtPanel::~WExtPanel() = default;

OviAPI::SlotResult WExtPanel::onCharsetChanged(OviAPI::Object*)
{
    return 0;
}
