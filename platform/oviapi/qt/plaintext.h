// Captions and tool tips without what the toolkit would read out of them.
#pragma once

#include <QString>

namespace OviAPI {

// A caption as it is read out: without the marks of mnemonics.
QString withoutMnemonic(const QString& caption);

// A tool tip that shows tags as they stand, and lines as lines; empty for an empty text.
QString plainToolTip(const QString& text);

} // namespace OviAPI
