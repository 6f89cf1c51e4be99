// The pixels behind a picture.
#pragma once

#include <vector>

#include <QImage>

#include <oviapi/picture.h>

namespace OviAPI {

struct Picture::Native {
    // Never empty; in ascending order of their device pixel ratio, which is set in each.
    std::vector<QImage> variants;
    // While a device draws on the pixels, copies do not share them.
    bool painted = false;
};

} // namespace OviAPI
