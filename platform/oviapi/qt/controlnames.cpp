#include "controlnames.h"

#include <algorithm>

#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

#include <oviapi/static.h>

#include "native.h"
#include "plaintext.h"
#include "srcview.h"

namespace OviAPI {

namespace {

constexpr char namedByLabel[] = "oviNamedByLabel"; // property of a widget whose name came from here
constexpr int farthest = 200;                      // px between a label and what it names

bool needsName(const QWidget& widget)
{
    if (!qobject_cast<const QLineEdit*>(&widget) && !qobject_cast<const QComboBox*>(&widget) &&
        !qobject_cast<const QAbstractItemView*>(&widget) &&
        !qobject_cast<const QAbstractSpinBox*>(&widget) && !dynamic_cast<const SrcArea*>(&widget))
        return false;
    return widget.accessibleName().isEmpty() || widget.property(namedByLabel).toBool();
}

// Distance of a label that stands before the widget in reading order; a label in the same row comes
// before any label above. Larger than twice farthest: does not belong to it.
int distance(const QRect& label, const QRect& widget)
{
    const int sameRows =
        std::min(label.bottom(), widget.bottom()) - std::max(label.top(), widget.top()) + 1;
    const int left = widget.left() - label.right();
    if (sameRows * 2 >= std::min(label.height(), widget.height()) && left >= 0 && left <= farthest)
        return left;
    const int above = widget.top() - label.bottom();
    const bool over = label.left() <= widget.right() && label.right() >= widget.left();
    if (over && above >= 0 && above <= farthest / 4)
        return farthest + above;
    return 3 * farthest;
}

// The toolkit reads a list's label to nobody.
bool takesNameFrom(const QWidget& widget)
{
    return qobject_cast<const QAbstractItemView*>(&widget);
}

bool hasMnemonic(const QString& text)
{
    for (qsizetype i = 0; i + 1 < text.size(); ++i) {
        if (text[i] != '&')
            continue;
        if (text[i + 1] != '&')
            return true;
        ++i; // an ampersand itself
    }
    return false;
}

bool isNeighbourOf(const QLabel& label, const QWidget& widget)
{
    return widget.parentWidget() == label.parentWidget() && (widget.focusPolicy() & Qt::TabFocus) &&
           widget.isVisibleTo(label.window());
}

// What stands beside or below the label and takes the focus; null when nothing is near.
QWidget* nearestControl(const QLabel& label)
{
    QWidget* nearest = nullptr;
    int least = 2 * farthest + 1;
    for (QWidget* widget :
         label.parentWidget()->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (!isNeighbourOf(label, *widget))
            continue;
        const int d = distance(label.geometry(), widget->geometry());
        if (d < least) {
            nearest = widget;
            least = d;
        }
    }
    return nearest;
}

// The next widget behind the label, in the order of Tab, that takes the focus.
QWidget* nextControl(const QWidget& label)
{
    const QWidget* const window = label.window();
    for (QWidget* next = label.nextInFocusChain(); next && next != &label;
         next = next->nextInFocusChain()) {
        if (next == window)
            return nullptr; // behind the last control the chain begins anew
        if ((next->focusPolicy() & Qt::TabFocus) && next->isVisibleTo(window))
            return next;
    }
    return nullptr;
}

QWidget* controlOf(const QLabel& label)
{
    QWidget* nearest = nearestControl(label);
    return nearest ? nearest : nextControl(label);
}

} // namespace

void joinLabels(QWidget* surface)
{
    for (QLabel* label : surface->findChildren<QLabel*>()) {
        const auto* owner = dynamic_cast<const WStatic*>(objectOf(label));
        if (!owner || widgetOf(owner) != label)
            continue; // inside a control of the toolkit
        const WVisualObject* buddy = owner->buddy();
        if (buddy && widgetOf(buddy))
            label->setBuddy(widgetOf(buddy));
        else if (!label->buddy() && hasMnemonic(label->text()))
            label->setBuddy(controlOf(*label));
    }
}

void nameControls(QWidget* surface)
{
    const auto widgets = surface->findChildren<QWidget*>();
    for (QWidget* widget : widgets) {
        if (!needsName(*widget) || !widget->parentWidget())
            continue;
        const QLabel* best = nullptr;
        int bestDistance = 2 * farthest + 1;
        bool named = false;
        const auto labels =
            widget->parentWidget()->findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly);
        for (const QLabel* label : labels) {
            if (label->buddy() == widget && takesNameFrom(*widget)) {
                best = label;
                break;
            }
            named = named || label->buddy() == widget;
            const int d = distance(label->geometry(), widget->geometry());
            if (!label->buddy() && d < bestDistance) {
                best = label;
                bestDistance = d;
            }
        }
        if (named || !best)
            continue;
        widget->setAccessibleName(withoutMnemonic(best->text()));
        widget->setProperty(namedByLabel, true);
    }
}

} // namespace OviAPI
