// Colours between two others.
#pragma once

#include <QColor>

namespace OviAPI {

// A part of one colour, from 0 to of, in another.
inline QColor mix(const QColor& base, const QColor& added, int part, int of)
{
    const auto one = [&](int b, int a) { return b + (a - b) * part / of; };
    return QColor(one(base.red(), added.red()), one(base.green(), added.green()),
                  one(base.blue(), added.blue()));
}

} // namespace OviAPI
