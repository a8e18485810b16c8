#include "Keychain/BackgroundTokenStore.h"
#include "Keychain/Keychain.h"

#include <gmock/gmock.h>

#include <QStringList>

#include <semaphore>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

using Status = SecretStatus;

/// Answers as told and notes what it was asked.
struct Place {
    SecretReading reading{Status::notFound, {}};
    Status removal = Status::failed;
    Status addition = Status::success;
    QStringList calls{};
};

class ScriptedStorage final : public SecretStorage {
public:
    explicit ScriptedStorage(Place& place)
        : m_place(place)
    {
    }

    SecretReading read(const QString& service, const QString& account) override
    {
        m_place.calls.append(u"read %1/%2"_s.arg(service, account));
        return m_place.reading;
    }
    Status add(const QByteArray& secret, const QString& service, const QString& account) override
    {
        m_place.calls.append(u"add %1/%2 %3"_s.arg(service, account, QString::fromUtf8(secret)));
        return m_place.addition;
    }
    Status remove(const QString& service, const QString& account) override
    {
        m_place.calls.append(u"remove %1/%2"_s.arg(service, account));
        return m_place.removal;
    }

private:
    Place& m_place;
};

Keychain keychain(Place& first, Place& second)
{
    std::vector<std::unique_ptr<SecretStorage>> storages;
    storages.push_back(std::make_unique<ScriptedStorage>(first));
    storages.push_back(std::make_unique<ScriptedStorage>(second));
    return Keychain(u"app"_s, std::move(storages));
}

TEST(Keychain, ReadsTheSecondPlaceOnlyWhereTheFirstHasNothingToSay)
{
    const SecretReading other{Status::success, "two"};
    const SecretReading nothing{Status::notFound, {}};
    const SecretReading failure{Status::failed, {}};
    const struct {
        SecretReading first;
        SecretReading second;
        std::optional<QString> expected;
        bool asksSecond;
    } cases[] = {
        {{Status::success, "\xC3\xA4 \xF0\x9F\x94\x91"}, other, u"\u00e4 \U0001F511"_s, false},
        {{Status::success, ""}, other, u""_s, false},
        {{Status::success, "\xC3\x28"}, other, std::nullopt, false},
        {{Status::success, "ok\xE2\x82"}, other, std::nullopt, false},
        {failure, other, std::nullopt, false},
        {nothing, other, u"two"_s, true},
        {{Status::unavailable, {}}, other, u"two"_s, true},
        {nothing, failure, std::nullopt, true},
    };
    for (const auto& one : cases) {
        Place first{.reading = one.first};
        Place second{.reading = one.second};
        EXPECT_EQ(keychain(first, second).string(u"token"_s), one.expected);
        EXPECT_EQ(first.calls, QStringList{u"read app/token"_s});
        EXPECT_EQ(second.calls, one.asksSecond ? first.calls : QStringList());
    }
}

TEST(Keychain, RemovesThenAddsUntilOnePlaceTakesItAndDeletesFromBoth)
{
    const struct {
        Status first;
        Status second;
        bool expected;
        bool reachesSecond;
    } cases[] = {
        {Status::success, Status::success, true, false},
        {Status::failed, Status::success, false, false},
        {Status::unavailable, Status::success, true, true},
        {Status::unavailable, Status::unavailable, false, true},
    };
    for (const auto& one : cases) {
        Place first{.addition = one.first};
        Place second{.addition = one.second};
        Keychain store = keychain(first, second);
        EXPECT_EQ(store.set(u"s\u00e9same"_s, u"token"_s), one.expected);
        EXPECT_EQ(first.calls, QStringList({u"remove app/token"_s, u"add app/token s\u00e9same"_s}));
        EXPECT_EQ(second.calls, one.reachesSecond ? first.calls : QStringList());

        first.calls.clear();
        second.calls.clear();
        EXPECT_TRUE(store.set(std::nullopt, u"token"_s));
        EXPECT_EQ(first.calls, QStringList{u"remove app/token"_s});
        EXPECT_EQ(second.calls, first.calls);
    }
}

TEST(Keychain, AsksAPlaceThatIsNotThereOnce)
{
    Place first{.removal = Status::unavailable};
    Place second;
    EXPECT_TRUE(keychain(first, second).set(u"new"_s, u"token"_s));
    EXPECT_EQ(first.calls, QStringList{u"remove app/token"_s});
    EXPECT_EQ(second.calls, QStringList({u"remove app/token"_s, u"add app/token new"_s}));

    second = {.removal = Status::unavailable};
    EXPECT_FALSE(keychain(first, second).set(u"new"_s, u"token"_s));
    EXPECT_TRUE(keychain(first, second).set(std::nullopt, u"token"_s));
}

/// A store that writes no sooner than it may.
class HungTokenStore final : public TokenStore {
public:
    explicit HungTokenStore(QStringList& written)
        : m_written(written)
    {
    }

    std::optional<QString> string(const QString&) override { return m_written.constLast(); }
    bool set(const std::optional<QString>& value, const QString& key) override
    {
        mayWrite.acquire();
        m_written.append(key + u'=' + value.value_or(u"none"_s));
        return false;
    }

    std::counting_semaphore<> mayWrite{0};

private:
    QStringList& m_written;
};

TEST(BackgroundTokenStore, WaitsForAStoreWithItsReadsAndItsEndAlone)
{
    QStringList written;
    auto hung = std::make_unique<HungTokenStore>(written);
    auto& mayWrite = hung->mayWrite;
    auto store = std::make_unique<BackgroundTokenStore>(std::move(hung));
    for (int round = 0; round < 50; ++round) {
        EXPECT_TRUE(store->set(QString::number(round), u"token"_s));
        EXPECT_TRUE(store->set(std::nullopt, u"token"_s));
    }
    mayWrite.release(100);
    EXPECT_EQ(store->string(u"token"_s), u"token=none"_s);
    EXPECT_EQ(written.size(), 100);
    EXPECT_EQ(written.mid(96), QStringList({u"token=48"_s, u"token=none"_s, u"token=49"_s, u"token=none"_s}));

    store->set(u"last"_s, u"token"_s);
    mayWrite.release();
    store.reset();
    EXPECT_EQ(written.constLast(), u"token=last"_s);
}

} // namespace

} // namespace orvia
