// Colours of what is wrong in a record view.
#pragma once

#include <QColor>

namespace OviAPI {

inline const QColor faultColor(0xD0, 0x20, 0x20);
inline const QColor cutColor(0xE0, 0x80, 0x00);

} // namespace OviAPI
