#include "Views/Widgets/AccessibleRole.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QVariant>
#include <QWidget>

namespace orvia {

namespace {

constexpr char roleName[] = "accessibleRole";

QAccessibleInterface* makeAccessible(const QString&, QObject* object)
{
    auto* widget = qobject_cast<QWidget*>(object);
    const QVariant role = widget ? widget->property(roleName) : QVariant();
    return role.isValid() ? new QAccessibleWidget(widget, static_cast<QAccessible::Role>(role.toInt()))
                          : nullptr;
}

void mark(QWidget* widget, QAccessible::Role role)
{
    static const bool installed = (QAccessible::installFactory(makeAccessible), true);
    Q_UNUSED(installed)
    widget->setProperty(roleName, static_cast<int>(role));
}

} // namespace

void markAsStaticText(QWidget* widget)
{
    mark(widget, QAccessible::StaticText);
}

void markAsProgress(QWidget* widget)
{
    mark(widget, QAccessible::ProgressBar);
}

void markAsDecoration(QWidget* widget)
{
    // Like the widgets that only hold others.
    mark(widget, QAccessible::Client);
}

} // namespace orvia
