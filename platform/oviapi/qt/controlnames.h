// Labels and the controls they belong to: mnemonics, and names for assistive technology.
#pragma once

class QWidget;

namespace OviAPI {

// Gives every label with a mnemonic the control it leads to: its buddy, which may have been created
// after it, else the control beside or below it, else the next one behind it that takes the focus
// by Tab.
void joinLabels(QWidget* surface);

// Gives every field and list on the surface that has neither a name of its own nor a label that
// names it the text of the label on its left, else of the label above it.
void nameControls(QWidget* surface);

} // namespace OviAPI
