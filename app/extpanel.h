// The base of panels inside the library's forms.
#pragma once

#include <oviapi/panel.h>

#include "app/export.h"

class OVIEXT_API WExtPanel : public OviAPI::WPanel {
public:
    WExtPanel();
    ~WExtPanel() override;

    // Panels with texts load them again in it.
    OviAPI::SlotResult onCharsetChanged(OviAPI::Object* sender) override;
};
