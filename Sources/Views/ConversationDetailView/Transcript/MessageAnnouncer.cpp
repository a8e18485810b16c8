#include "Views/ConversationDetailView/Transcript/MessageAnnouncer.h"

#include <QAccessible>
#include <QAccessibleWidget>

namespace orvia {

namespace {

QAccessibleInterface* makeInterface(const QString&, QObject* object)
{
    auto* announcer = qobject_cast<MessageAnnouncer*>(object);
    return announcer ? new QAccessibleWidget(announcer, QAccessible::Notification) : nullptr;
}

} // namespace

MessageAnnouncer::MessageAnnouncer(QWidget* parent)
    : QWidget(parent)
{
    static const bool installed = (QAccessible::installFactory(makeInterface), true);
    Q_UNUSED(installed)
    setFixedSize(0, 0);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void MessageAnnouncer::announce(const QString& text)
{
    if (!QAccessible::isActive() || text.isEmpty())
        return;
    // Screen readers speak a notification at the moment at which it begins to show.
    setAccessibleName(text);
    QAccessibleEvent shown(this, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&shown);
}

} // namespace orvia
