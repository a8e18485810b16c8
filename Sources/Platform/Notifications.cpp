#include "Platform/Notifications.h"

#include "Platform/MessageBus.h"
#include "Platform/ShownText.h"

#include <QDBusServiceWatcher>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr auto serviceName = "org.freedesktop.Notifications"_L1;
constexpr auto objectPath = "/org/freedesktop/Notifications"_L1;
constexpr auto defaultAction = "default"_L1;

// What a server can show is far less; what is pushed could be anything.
constexpr qsizetype longestTitle = 200;
constexpr qsizetype longestBody = 2000;

// A server forgets notifications too; these are only those whose end it has not told.
constexpr qsizetype mostRemembered = 200;

QDBusMessage callOf(const QString& method)
{
    return QDBusMessage::createMethodCall(serviceName, objectPath, serviceName, method);
}

/// Servers hand texts to markup parsers, which refuse a whole text for one control character, and show
/// several texts in a row, which one of them must not turn around.
QString shownText(const QString& text, qsizetype longest)
{
    QString shown;
    for (const QChar character : text.left(longest + 1)) {
        const bool isLayout = character == u'\n' || character == u'\t';
        const bool isControl = character.category() == QChar::Other_Control && !isLayout;
        if (!isControl && !isDirectionFormatting(character.unicode()))
            shown.append(character);
    }
    if (text.size() <= longest)
        return shown;
    shown.truncate(longest - 1);
    if (!shown.isEmpty() && shown.back().isHighSurrogate())
        shown.chop(1);
    return shown + u'\u2026';
}

} // namespace

Notifications::Notifications(NotificationSender sender, const QString& busConnection, QObject* parent)
    : QObject(parent)
    , m_sender(std::move(sender))
    , m_busConnection(busConnection)
{
}

/// Not before something is shown, because the toolkit then asks the bus who the server is and waits.
void Notifications::listen()
{
    QDBusConnection bus = busNamed(m_busConnection);
    if (!bus.isConnected() || std::exchange(m_isListening, true))
        return;
    bus.connect(serviceName, objectPath, serviceName, u"ActionInvoked"_s, this,
                SLOT(onActionInvoked(uint, QString)));
    bus.connect(serviceName, objectPath, serviceName, u"ActivationToken"_s, this,
                SLOT(onActivationToken(uint, QString)));
    bus.connect(serviceName, objectPath, serviceName, u"NotificationClosed"_s, this,
                SLOT(onNotificationClosed(uint, uint)));
    watchServer();
}

/// Other than the subscription to a server's signals, this waits for nobody.
void Notifications::watchServer()
{
    const QDBusConnection bus = busNamed(m_busConnection);
    if (!bus.isConnected() || std::exchange(m_isWatching, true))
        return;
    auto* watcher = new QDBusServiceWatcher(serviceName, bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, [this] {
        m_isServerRunning = true;
        Q_EMIT appeared();
    });
    connect(watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this] {
        m_isServerRunning = false;
        // A new server counts its notifications from the start again.
        m_presented.clear();
    });
}

void Notifications::askWhetherAvailable(std::function<void(bool)> answer)
{
    watchServer();
    QDBusMessage call = callOf(u"GetServerInformation"_s);
    // One that comes and crashes is not to be started over and over by the question whether it is there.
    call.setAutoStartService(!m_isServerRunning);
    sendCall(busNamed(m_busConnection), call, this, [answer = std::move(answer)](const QDBusMessage& reply) {
        answer(reply.type() == QDBusMessage::ReplyMessage);
    });
}

void Notifications::present(const Notification& notification)
{
    listen();
    sendCall(busNamed(m_busConnection), callOf(u"GetCapabilities"_s), this,
             [this, notification](const QDBusMessage& reply) {
                 if (reply.type() == QDBusMessage::ReplyMessage)
                     send(notification, reply.arguments().value(0).toStringList());
             });
}

void Notifications::send(const Notification& notification, const QStringList& capabilities)
{
    QString title = shownText(notification.title, longestTitle);
    QString body = shownText(notification.body, longestBody);
    if (!capabilities.contains("body"_L1) && !body.isEmpty())
        title = title.isEmpty() ? body : title + ": "_L1 + body;
    if (capabilities.contains("body-markup"_L1))
        body = body.toHtmlEscaped();

    QStringList actions;
    if (capabilities.contains("actions"_L1))
        actions << defaultAction << tr("Open");

    QVariantMap hints{
        {u"desktop-entry"_s, m_sender.desktopEntry},
        {u"category"_s, u"im.received"_s},
    };
    if (notification.isTransient)
        hints.insert(u"transient"_s, true);
    if (notification.hasSound)
        hints.insert(u"sound-name"_s, u"message-new-instant"_s);

    constexpr int serversOwnTimeout = -1;
    constexpr uint replacesNone = 0;
    QDBusMessage call = callOf(u"Notify"_s);
    call << m_sender.name << replacesNone << m_sender.desktopEntry << title << body << actions << hints
         << serversOwnTimeout;
    ++m_unanswered;
    sendCall(busNamed(m_busConnection), call, this,
             [this, userInfo = notification.userInfo](const QDBusMessage& reply) {
                 --m_unanswered;
                 if (reply.type() == QDBusMessage::ReplyMessage)
                     remember(reply.arguments().value(0).toUInt(), userInfo);
                 if (m_unanswered == 0)
                     m_early.clear();
             });
}

void Notifications::remember(uint id, const QVariantMap& userInfo)
{
    m_presented.insert(id, {userInfo, {}});
    // Servers count upwards, so the smallest number is the oldest notification.
    while (m_presented.size() > mostRemembered)
        m_presented.erase(m_presented.begin());
    QList<std::function<void()>> early = m_early.values(id);
    m_early.remove(id);
    std::reverse(early.begin(), early.end()); // the map has the latest first
    for (const auto& act : early) {
        if (m_presented.contains(id))
            act();
    }
}

/// Calls @p act for a notification of this program. The toolkit may hand over a signal before the answer that
/// the server sent ahead of it.
void Notifications::whenKnown(uint id, const std::function<void()>& act)
{
    if (m_presented.contains(id))
        act();
    else if (m_unanswered > 0)
        m_early.insert(id, act);
}

void Notifications::onActionInvoked(uint id, const QString& action)
{
    if (action != defaultAction)
        return;
    whenKnown(id, [this, id] {
        const Presented copy = m_presented.value(id); // an observer may forget the notification
        Q_EMIT clicked(copy.userInfo, copy.activationToken);
    });
}

void Notifications::onActivationToken(uint id, const QString& token)
{
    whenKnown(id, [this, id, token] { m_presented[id].activationToken = token; });
}

void Notifications::onNotificationClosed(uint id, uint)
{
    whenKnown(id, [this, id] { m_presented.remove(id); });
}

} // namespace orvia
