#include "controlnames.h"

#include <algorithm>

#include <QAbstractItemView>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

namespace OviAPI {

namespace {

constexpr char namedByLabel[] = "oviNamedByLabel"; // property of a widget whose name came from here
constexpr int farthest = 200;                      // px between a label and what it names

bool needsName(const QWidget& widget)
{
    if (!qobject_cast<const QLineEdit*>(&widget) && !qobject_cast<const QComboBox*>(&widget) &&
        !qobject_cast<const QAbstractItemView*>(&widget))
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

QString withoutMnemonic(const QString& text)
{
    QString plain;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == '&' && i + 1 < text.size())
            ++i;
        plain += text[i];
    }
    return plain;
}

} // namespace

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
