// Message boxes.
#pragma once

#include <oviapi/export.h>

namespace OviAPI {

class OVIAPI_API MsgBox {
public:
    // Bits of a set of buttons, and the result.
    enum Button : int {
        Ok = 1,
        Cancel = 2,
        Yes = 4,
        No = 8,
    };
    // Shows the text, in the application's font of controls where it has one, with captions in its
    // language (oviapi/phrases.h), and waits for one of the buttons; a set without any gets Ok.
    // Both texts are plain text; null counts as empty. Closing the box, and Escape, count as Cancel
    // when there is such a button, else as No, else as the single button; a box that has none of
    // these stays. The default button is the first of Yes, Ok, No, Cancel. Without a started
    // application the text goes to the standard error stream and the result is that of closing, 0
    // for none.
    static int show(const wchar_t* title, const wchar_t* text, int buttons = Ok);
    // With another default button.
    static int showEx(const wchar_t* title, const wchar_t* text, int buttons, int defaultButton);
};

} // namespace OviAPI
