// A label that is as large as its text.
#pragma once

#include <oviapi/static.h>

#include "app/export.h"

// Takes the size of its text, of at most 255 characters, each time it is painted.
class OVIEXT_API WExtStatic : public OviAPI::WStatic {
public:
    WExtStatic();
    ~WExtStatic() override;

    void setText(const wchar_t* text);
    // False, with nothing painted, when the device cannot be painted on.
    bool doPaint(OviAPI::PaintDevice* device) override;
};
