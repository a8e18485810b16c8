#include "Views/ConversationDetailView/Transcript/MessageAnnouncer.h"

#include <QAccessible>
#include <QAccessibleWidget>

#include <chrono>

namespace orvia {

namespace {

/// How long an announcement stands. Screen readers fetch its text after they have heard that it shows.
constexpr auto standing = std::chrono::seconds(10);

class AnnouncerInterface : public QAccessibleWidget {
public:
    explicit AnnouncerInterface(MessageAnnouncer* announcer)
        : QAccessibleWidget(announcer, QAccessible::Notification)
    {
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.invisible = state.invisible || widget()->accessibleName().isEmpty();
        return state;
    }
};

QAccessibleInterface* makeInterface(const QString&, QObject* object)
{
    auto* announcer = qobject_cast<MessageAnnouncer*>(object);
    return announcer ? new AnnouncerInterface(announcer) : nullptr;
}

} // namespace

MessageAnnouncer::MessageAnnouncer(QWidget* parent)
    : QWidget(parent)
{
    static const bool installed = (QAccessible::installFactory(makeInterface), true);
    Q_UNUSED(installed)
    setFixedSize(0, 0);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    m_end.setSingleShot(true);
    m_end.setInterval(standing);
    connect(&m_end, &QTimer::timeout, this, &MessageAnnouncer::end);
}

void MessageAnnouncer::announce(const QString& text)
{
    if (!QAccessible::isActive() || text.isEmpty())
        return;
    // Screen readers speak a notification at the moment at which it begins to show.
    setAccessibleName(text);
    QAccessibleEvent shown(this, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&shown);
    m_end.start();
}

void MessageAnnouncer::end()
{
    setAccessibleName({});
    QAccessibleEvent hidden(this, QAccessible::ObjectHide);
    QAccessible::updateAccessibility(&hidden);
}

} // namespace orvia
