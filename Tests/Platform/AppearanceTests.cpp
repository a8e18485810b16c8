#include "Platform/Appearance.h"

#include "FakePortal.h"
#include "Support/Waiting.h"

#include <gmock/gmock.h>

namespace orvia {

using namespace Qt::StringLiterals;

using Scheme = Appearance::Scheme;

namespace {

class AppearanceTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(bus.isRunning()); }

    test::PrivateBus bus;
    test::BusConnection own{bus};
};

/// First of all, because the toolkit knows the signal's types once it has met them.
TEST_F(AppearanceTest, FollowsThePortalsSettingHoweverItIsWrapped)
{
    for (const bool isWrappedTwice : {true, false}) {
        test::FakePortal portal(bus, 1u, isWrappedTwice);
        const Appearance appearance(own.name());
        QList<std::optional<Scheme>> seen;
        QObject::connect(&appearance, &Appearance::changed, &appearance,
                         [&] { seen.append(appearance.preferred()); });
        ASSERT_TRUE(test::waitUntil([&] { return !seen.isEmpty(); }));

        const auto tell = [&](const char* settingNamespace, const char* key, const QVariant& value) {
            Q_EMIT portal.SettingChanged(QString::fromLatin1(settingNamespace), QString::fromLatin1(key),
                                         QDBusVariant(value));
        };
        tell("org.gnome.desktop.interface", "color-scheme", 2u);
        tell("org.freedesktop.appearance", "contrast", 2u);
        for (const QVariant& value : {QVariant(1u), QVariant(2u), QVariant(2u), QVariant(3u), QVariant(1u),
                                      QVariant(u"dark"_s), QVariant(0u), QVariant(2u)})
            tell("org.freedesktop.appearance", "color-scheme", value);
        ASSERT_TRUE(test::waitUntil([&] { return seen.size() >= 6; }));
        EXPECT_EQ(seen, (QList<std::optional<Scheme>>{Scheme::dark, Scheme::light, std::nullopt, Scheme::dark,
                                                      std::nullopt, Scheme::light}));
    }
}

TEST_F(AppearanceTest, APortalThatComesLaterIsAsked)
{
    const Appearance appearance(own.name());
    const test::FakePortal portal(bus, 1u, true);
    EXPECT_TRUE(test::waitUntil([&] { return appearance.preferred() == Scheme::dark; }));
}

} // namespace

} // namespace orvia
