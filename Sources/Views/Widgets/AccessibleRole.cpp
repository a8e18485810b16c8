#include "Views/Widgets/StaticTextRole.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QVariant>
#include <QWidget>

namespace orvia {

namespace {

constexpr char markName[] = "staticText";

QAccessibleInterface* makeAccessible(const QString&, QObject* object)
{
    auto* widget = qobject_cast<QWidget*>(object);
    if (!widget || !widget->property(markName).toBool())
        return nullptr;
    return new QAccessibleWidget(widget, QAccessible::StaticText);
}

} // namespace

void markAsStaticText(QWidget* widget)
{
    static const bool installed = (QAccessible::installFactory(makeAccessible), true);
    Q_UNUSED(installed)
    widget->setProperty(markName, true);
}

} // namespace orvia
