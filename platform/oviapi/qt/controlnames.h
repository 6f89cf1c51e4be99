// Names of controls for assistive technology.
#pragma once

class QWidget;

namespace OviAPI {

// Gives every field and list on the surface that has neither a name of its own nor a label that
// names it the text of the label on its left, else of the label above it.
void nameControls(QWidget* surface);

} // namespace OviAPI
