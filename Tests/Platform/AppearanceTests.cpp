#include "Platform/Appearance.h"

#include "FakePortal.h"
#include "Support/BusPeers.h"
#include "Support/PrivateBus.h"
#include "Support/Waiting.h"

#include <gmock/gmock.h>

namespace orvia {

using namespace Qt::StringLiterals;
using test::FakePortal;
using test::PrivateBus;
using test::waitUntil;
using Scheme = Appearance::Scheme;

namespace {

class AppearanceTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(bus.isRunning()); }

    PrivateBus bus;
    test::BusConnection own{bus};
};

TEST_F(AppearanceTest, ReadsThePortalsPreference)
{
    struct Case {
        QVariant value;
        std::optional<Scheme> expected;
    };
    const Case cases[] = {
        {0u, std::nullopt}, {1u, Scheme::dark},        {2u, Scheme::light},
        {3u, std::nullopt}, {u"dark"_s, std::nullopt},
    };
    for (const bool isWrappedTwice : {true, false}) {
        for (const Case& expected : cases) {
            FakePortal portal(bus, expected.value, isWrappedTwice);
            const Appearance appearance(own.name());
            EXPECT_EQ(appearance.preferred(), std::nullopt);
            ASSERT_TRUE(waitUntil([&] { return portal.reads > 0; }));
            // What follows the answer tells that it has arrived.
            Appearance witness(own.name());
            ASSERT_TRUE(waitUntil([&] { return portal.reads > 1; }));
            Q_EMIT portal.SettingChanged(u"org.freedesktop.appearance"_s, u"accent-color"_s,
                                         QDBusVariant(1u));
            EXPECT_TRUE(waitUntil([&] { return appearance.preferred() == expected.expected; }));
        }
    }
}

TEST_F(AppearanceTest, FollowsChangesLive)
{
    FakePortal portal(bus, 2u, true);
    Appearance appearance(own.name());
    QList<std::optional<Scheme>> seen;
    QObject::connect(&appearance, &Appearance::changed, &appearance,
                     [&] { seen.append(appearance.preferred()); });
    ASSERT_TRUE(waitUntil([&] { return !seen.isEmpty(); }));

    const QString ownNamespace = u"org.freedesktop.appearance"_s;
    Q_EMIT portal.SettingChanged(ownNamespace, u"contrast"_s, QDBusVariant(1u));
    Q_EMIT portal.SettingChanged(u"org.gnome.desktop.interface"_s, u"color-scheme"_s, QDBusVariant(1u));
    Q_EMIT portal.SettingChanged(ownNamespace, u"color-scheme"_s, QDBusVariant(2u));
    Q_EMIT portal.SettingChanged(ownNamespace, u"color-scheme"_s, QDBusVariant(1u));
    Q_EMIT portal.SettingChanged(ownNamespace, u"color-scheme"_s, QDBusVariant(1u));
    Q_EMIT portal.SettingChanged(ownNamespace, u"color-scheme"_s, QDBusVariant(0u));
    ASSERT_TRUE(waitUntil([&] { return seen.size() >= 3; }));
    EXPECT_EQ(seen, (QList<std::optional<Scheme>>{Scheme::light, Scheme::dark, std::nullopt}));
}

TEST_F(AppearanceTest, APortalThatComesLaterIsAsked)
{
    Appearance appearance(own.name());
    FakePortal portal(bus, 1u, true);
    EXPECT_TRUE(waitUntil([&] { return appearance.preferred() == Scheme::dark; }));
}

TEST(AppearanceWithoutBus, HasNoPreference)
{
    Appearance appearance(u"no such connection"_s);
    test::spinFor(std::chrono::milliseconds(10));
    EXPECT_EQ(appearance.preferred(), std::nullopt);
}

} // namespace

} // namespace orvia
