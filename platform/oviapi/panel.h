// A rectangle that holds other controls and may paint itself.
#pragma once

#include <oviapi/container.h>
#include <oviapi/export.h>
#include <oviapi/typicalcontrol.h>

namespace OviAPI {

// Without a parent it has a native part but is not seen. Style bits: PanelStyle.
class OVIAPI_API WPanel : public virtual WTypicalControl, public virtual Container {
public:
    enum PanelStyle : long {
        TabStop = 2, // takes the focus by Tab and by a click
        Border = 8,  // a thin frame; the client area lies inside it
    };

    WPanel();
    ~WPanel() override;

    // For panels that behave like windows: called by the panel's own buttons or by the
    // application. The default handling does nothing and returns true.
    virtual bool onMinimize();
    virtual bool onMaximize();
    virtual bool onRestore();
    // Asked before the panel is closed; true lets it go on.
    virtual bool onClose();

    // Hides the panel, without asking.
    void close();

protected:
    std::unique_ptr<Native> makeNative() override;
};

} // namespace OviAPI

OVIAPI_SIGNAL(OviAPI::WPanel, onMinimize);
OVIAPI_SIGNAL(OviAPI::WPanel, onMaximize);
OVIAPI_SIGNAL(OviAPI::WPanel, onRestore);
OVIAPI_SIGNAL(OviAPI::WPanel, onClose);
