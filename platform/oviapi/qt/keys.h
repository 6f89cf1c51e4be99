// Keys and mouse flags between the framework and Qt.
#pragma once

#include <QKeyEvent>

#include <oviapi/virtualkey.h>

namespace OviAPI {

// KeyboardKey of a Qt key, and back; KeyNone and Qt::Key_unknown for what the other has not.
int keyboardKey(int qtKey);
Qt::Key qtKey(int keyboardKey);

VirtualKey toVirtualKey(const QKeyEvent& event);
long toMouseFlags(Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers);

} // namespace OviAPI
