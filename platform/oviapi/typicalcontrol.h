// The base of every control that takes the font of its form.
#pragma once

#include <oviapi/export.h>
#include <oviapi/wvisualobject.h>

namespace OviAPI {

class OVIAPI_API WTypicalControl : public virtual WVisualObject {
public:
    WTypicalControl();
    ~WTypicalControl() override;
};

} // namespace OviAPI
