#include "Platform/Notifications.h"

#include "Support/BusPeers.h"
#include "Support/Waiting.h"

#include <gmock/gmock.h>

#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVariant>

namespace orvia {

using namespace Qt::StringLiterals;
using test::NotificationServer;
using test::waitUntil;

namespace {

const NotificationSender sender{u"Sender"_s, u"org.example.Sender"_s};

class NotificationsTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(bus.isRunning());
        QObject::connect(&notifications, &Notifications::clicked, &notifications,
                         [this](const QVariantMap& userInfo, const QString& token) {
                             clicks.append({userInfo.value(u"n"_s).toInt(), token});
                         });
    }

    bool isServed()
    {
        std::optional<bool> answer;
        notifications.askWhetherAvailable([&](bool isAvailable) { answer = isAvailable; });
        EXPECT_TRUE(waitUntil([&] { return answer.has_value(); }));
        return answer.value_or(false);
    }

    void present(NotificationServer& server, const Notification& notification)
    {
        const qsizetype before = server.shown.size();
        notifications.present(notification);
        ASSERT_TRUE(waitUntil([&] { return server.shown.size() > before; }));
    }

    /// A click on the last of these, which the program learns of after the earlier signals.
    void clickAndWait(NotificationServer& server, uint id)
    {
        const qsizetype before = clicks.size();
        Q_EMIT server.ActionInvoked(id, u"default"_s);
        ASSERT_TRUE(waitUntil([&] { return clicks.size() > before; }));
    }

    test::PrivateBus bus;
    test::BusConnection own{bus};
    Notifications notifications{sender, own.name()};
    QList<std::pair<int, QString>> clicks;
};

TEST_F(NotificationsTest, ShowsTextAsItIsWrittenWhateverTheServerUnderstands)
{
    struct Case {
        QStringList capabilities;
        QString title;
        QString body;
        QStringList actions;
    };
    const QStringList open{u"default"_s, u"Open"_s};
    const Case cases[] = {
        {{u"body"_s, u"actions"_s}, u"A & <b>"_s, u"<i>x</i> & \"y\"\nz"_s, open},
        {{u"body"_s, u"body-markup"_s}, u"A & <b>"_s, u"&lt;i&gt;x&lt;/i&gt; &amp; &quot;y&quot;\nz"_s, {}},
        {{u"actions"_s}, u"A & <b>: <i>x</i> & \"y\"\nz"_s, u"<i>x</i> & \"y\"\nz"_s, open},
    };
    for (const Case& expected : cases) {
        NotificationServer server(bus, expected.capabilities);
        present(server, {.title = u"A & \x1b\u202E<b>\x07"_s, .body = u"<i>x</i> & \"y\"\nz"_s});
        const NotificationServer::Shown shown = server.shown.constLast();
        EXPECT_EQ(shown.title, expected.title);
        EXPECT_EQ(shown.body, expected.body);
        EXPECT_EQ(shown.actions, expected.actions);
        EXPECT_EQ(shown.sender, sender.name);
        EXPECT_EQ(shown.icon, sender.desktopEntry);
        EXPECT_EQ(shown.hints.value(u"desktop-entry"_s), sender.desktopEntry);
    }
}

TEST_F(NotificationsTest, BoundsLongTextsBetweenCharacters)
{
    NotificationServer server(bus, {u"body"_s});
    present(server, {.title = QString(200, u't'), .body = u"x"_s + u"\U0001F600"_s.repeated(5000)});
    EXPECT_EQ(server.shown.constLast().title, QString(200, u't'));
    const QString body = server.shown.constLast().body;
    EXPECT_LE(body.size(), 2000);
    EXPECT_TRUE(body.endsWith(u"\U0001F600\u2026"_s));
}

TEST_F(NotificationsTest, OnlyClicksOnItsOwnOpenNotificationsCount)
{
    NotificationServer server(bus, {u"actions"_s});
    for (int number = 1; number <= 3; ++number)
        present(server, {.title = u"x"_s, .userInfo = {{u"n"_s, number}}});

    Q_EMIT server.ActionInvoked(77, u"default"_s);
    Q_EMIT server.ActionInvoked(1, u"another action"_s);
    Q_EMIT server.NotificationClosed(2, 1);
    Q_EMIT server.ActionInvoked(2, u"default"_s);
    Q_EMIT server.ActivationToken(3, u"token"_s);
    Q_EMIT server.ActivationToken(77, u"token"_s);
    clickAndWait(server, 3);
    clickAndWait(server, 1);
    EXPECT_EQ(clicks, (QList<std::pair<int, QString>>{{3, u"token"_s}, {1, u""_s}}));
}

TEST_F(NotificationsTest, AClickMayComeBeforeTheServersAnswer)
{
    NotificationServer server(bus, {u"actions"_s});
    server.isClickedAtOnce = true;
    present(server, {.title = u"one"_s, .userInfo = {{u"n"_s, 1}}});
    ASSERT_TRUE(waitUntil([&] { return !clicks.isEmpty(); }));
    Q_EMIT server.ActionInvoked(2, u"default"_s); // of another program, when nothing is unanswered
    present(server, {.title = u"two"_s, .userInfo = {{u"n"_s, 2}}});
    ASSERT_TRUE(waitUntil([&] { return clicks.size() == 2; }));
    EXPECT_EQ(clicks, (QList<std::pair<int, QString>>{{1, u"token"_s}, {2, u"token"_s}}));
}

TEST_F(NotificationsTest, ANewServerKnowsNothingOfTheOldOnesNotifications)
{
    {
        NotificationServer server(bus, {u"actions"_s});
        present(server, {.title = u"old"_s, .userInfo = {{u"n"_s, 1}}});
    }
    NotificationServer server(bus, {u"actions"_s});
    std::optional<bool> isAvailable;
    notifications.askWhetherAvailable([&](bool answer) { isAvailable = answer; });
    ASSERT_TRUE(waitUntil([&] { return isAvailable == true; })) << "the end of the old one is known";
    Q_EMIT server.ActionInvoked(1, u"default"_s);
    present(server, {.title = u"new"_s, .userInfo = {{u"n"_s, 2}}});
    clickAndWait(server, 1);
    EXPECT_EQ(clicks, (QList<std::pair<int, QString>>{{2, u""_s}}));
}

TEST_F(NotificationsTest, WorksWithARealServer)
{
    test::ChildProcess display;
    display.process().start(u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s, u"640x480x24"_s});
    while (!display.process().canReadLine() && display.process().waitForReadyRead(10000)) {
    }
    const QByteArray number = display.process().readLine().trimmed();
    ASSERT_FALSE(number.isEmpty()) << "Xvfb does not start";
    test::ScopedEnvironment environment;
    environment.set("DISPLAY", ':' + number);
    test::ChildProcess server;
    server.process().start(u"dunst"_s, QStringList());
    ASSERT_TRUE(waitUntil([&] { return isServed(); })) << "dunst does not start";

    const QString dunst = u"org.dunstproject.cmd0"_s;
    const auto call = [&](const QString& interface, const QString& method, const QVariantList& arguments) {
        QDBusMessage message = QDBusMessage::createMethodCall(
            u"org.freedesktop.Notifications"_s, u"/org/freedesktop/Notifications"_s, interface, method);
        message.setArguments(arguments);
        return own.connection().call(message);
    };
    const auto displayed = [&] {
        const QDBusReply<QDBusVariant> reply =
            call(u"org.freedesktop.DBus.Properties"_s, u"Get"_s, {dunst, u"displayedLength"_s});
        return reply.value().variant().toUInt();
    };
    notifications.present({.title = u"<b>Ann</b>"_s,
                           .body = u"a < b & c"_s,
                           .isTransient = false,
                           .hasSound = true,
                           .userInfo = {{u"n"_s, 7}}});
    ASSERT_TRUE(waitUntil([&] { return displayed() == 1; }));
    call(dunst, u"NotificationAction"_s, {0u});
    ASSERT_TRUE(waitUntil([&] { return !clicks.isEmpty(); }));
    EXPECT_EQ(clicks.constFirst().first, 7);
}

} // namespace

} // namespace orvia
