// What a widget is for assistive technology, where the toolkit cannot tell by its class.
#pragma once

#include <QAccessible>

class QWidget;

namespace OviAPI {

void setRole(QWidget& widget, QAccessible::Role role);

} // namespace OviAPI
