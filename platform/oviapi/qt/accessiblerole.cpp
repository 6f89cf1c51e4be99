#include "accessiblerole.h"

#include <QAccessibleWidget>
#include <QVariant>
#include <QWidget>

namespace OviAPI {

namespace {

constexpr char roleProperty[] = "role";

QAccessibleInterface* make(const QString&, QObject* object)
{
    auto* widget = qobject_cast<QWidget*>(object);
    const QVariant role = widget ? widget->property(roleProperty) : QVariant();
    if (!role.isValid())
        return nullptr;
    // The toolkit owns it.
    return new QAccessibleWidget(widget, static_cast<QAccessible::Role>(role.toInt()));
}

} // namespace

void setRole(QWidget& widget, QAccessible::Role role)
{
    QAccessible::installFactory(&make); // forgotten with each application
    widget.setProperty(roleProperty, static_cast<int>(role));
}

} // namespace OviAPI
