// The choice of a colour.
#pragma once

#include <memory>
#include <string>

#include <oviapi/color.h>
#include <oviapi/dialog.h>
#include <oviapi/export.h>

namespace OviAPI {

// Offers 48 colours, and any other by its components or as #rrggbb.
//
//     ColorDialog dialog;
//     dialog.setColor(pen.color());
//     if (dialog.execModal() == 1)
//         pen.setColor(dialog.color());
//
// execModal returns 1 for OK and 0 for Cancel, Escape and the close box. A colour by number comes
// in as what the palette shows; what comes out always has components. Without a title of its own
// the dialog has that of its language; its texts are loaded when it is created.
class OVIAPI_API ColorDialog : public virtual WDialog {
public:
    ColorDialog();
    explicit ColorDialog(Color color);
    ~ColorDialog() override;

    // The colour that is shown.
    void setColor(Color color);
    Color color() const;

    // Another colour is shown, by the user or by a call.
    virtual bool onColorChanged();

    bool create() override;

private:
    struct Parts;

    std::unique_ptr<Parts> m_parts;
};

} // namespace OviAPI

OVIAPI_SIGNAL(OviAPI::ColorDialog, onColorChanged);
