// Dialogs.
#pragma once

#include <oviapi/export.h>
#include <oviapi/form.h>

namespace OviAPI {

// A form that belongs to its parent: no entry of its own in the task bar. Without SizingBorder its
// size is fixed. Its style starts with no bit set.
class OVIAPI_API WDialog : public virtual WForm {
public:
    WDialog();
    ~WDialog() override;

protected:
    bool isDialog() const override { return true; }
};

} // namespace OviAPI
