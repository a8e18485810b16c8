#include "Keychain/Keychain.h"
#include "Platform/PrivateFile.h"

#include <gmock/gmock.h>

#include <QStringList>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

using Status = SecretStatus;

/// A place that answers as told and notes what it was asked.
class ScriptedStorage final : public SecretStorage {
public:
    struct Answers {
        SecretReading reading{Status::notFound, {}};
        Status addition = Status::success;
        Status removal = Status::notFound;
    };

    ScriptedStorage(QString name, Answers answers, QStringList& calls)
        : m_name(std::move(name))
        , m_answers(std::move(answers))
        , m_calls(calls)
    {
    }

    SecretReading read(const QString& service, const QString& account) override
    {
        note("read"_L1, service, account);
        return m_answers.reading;
    }
    Status add(const QByteArray& secret, const QString& service, const QString& account) override
    {
        note("add "_L1 + QString::fromUtf8(secret), service, account);
        return m_answers.addition;
    }
    Status remove(const QString& service, const QString& account) override
    {
        note("remove"_L1, service, account);
        return m_answers.removal;
    }

private:
    void note(const QString& call, const QString& service, const QString& account)
    {
        m_calls.append(m_name + ": "_L1 + call + ' '_L1 + service + '/'_L1 + account);
    }

    QString m_name;
    Answers m_answers;
    QStringList& m_calls;
};

Keychain keychain(ScriptedStorage::Answers first, ScriptedStorage::Answers second, QStringList& calls)
{
    std::vector<std::unique_ptr<SecretStorage>> storages;
    storages.push_back(std::make_unique<ScriptedStorage>(u"1"_s, std::move(first), calls));
    storages.push_back(std::make_unique<ScriptedStorage>(u"2"_s, std::move(second), calls));
    return Keychain(u"app"_s, std::move(storages));
}

struct ReadCase {
    SecretReading first;
    SecretReading second;
    std::optional<QString> expected;
    bool asksSecond;
};

class KeychainReading : public testing::TestWithParam<ReadCase> {};

TEST_P(KeychainReading, FollowsTheOutcomes)
{
    QStringList calls;
    Keychain store = keychain({.reading = GetParam().first}, {.reading = GetParam().second}, calls);
    EXPECT_EQ(store.string(u"token"_s), GetParam().expected);
    EXPECT_EQ(calls, GetParam().asksSecond ? QStringList({u"1: read app/token"_s, u"2: read app/token"_s})
                                           : QStringList({u"1: read app/token"_s}));
}

const SecretReading found1{Status::success, "one"};
const SecretReading found2{Status::success, "two"};
const SecretReading notFound{Status::notFound, {}};
const SecretReading unavailable{Status::unavailable, {}};
const SecretReading failed{Status::failed, {}};
const SecretReading damaged{Status::success, "\xC3\x28"};
const SecretReading cutOff{Status::success, "ok\xE2\x82"};
const SecretReading unusual{Status::success, "\xC3\xA4 \xF0\x9F\x94\x91"};

INSTANTIATE_TEST_SUITE_P(Keychain, KeychainReading,
                         testing::Values(ReadCase{found1, found2, u"one"_s, false},
                                         ReadCase{notFound, found2, u"two"_s, true},
                                         ReadCase{unavailable, found2, u"two"_s, true},
                                         ReadCase{failed, found2, std::nullopt, false},
                                         ReadCase{damaged, found2, std::nullopt, false},
                                         ReadCase{cutOff, found2, std::nullopt, false},
                                         ReadCase{unusual, found2, u"\u00e4 \U0001F511"_s, false},
                                         ReadCase{unavailable, notFound, std::nullopt, true},
                                         ReadCase{notFound, failed, std::nullopt, true},
                                         ReadCase{{Status::success, ""}, found2, u""_s, false}));

struct WriteCase {
    Status first;
    Status second;
    bool expected;
    bool reachesSecond;
};

class KeychainWriting : public testing::TestWithParam<WriteCase> {};

TEST_P(KeychainWriting, RemovesThenAddsUntilOnePlaceTakesIt)
{
    QStringList calls;
    Keychain store = keychain({.addition = GetParam().first, .removal = Status::failed},
                              {.addition = GetParam().second, .removal = Status::failed}, calls);
    EXPECT_EQ(store.set(u"s\u00e9same"_s, u"token"_s), GetParam().expected);
    QStringList expected{u"1: remove app/token"_s, u"1: add s\u00e9same app/token"_s};
    if (GetParam().reachesSecond)
        expected << u"2: remove app/token"_s << u"2: add s\u00e9same app/token"_s;
    EXPECT_EQ(calls, expected);
}

INSTANTIATE_TEST_SUITE_P(Keychain, KeychainWriting,
                         testing::Values(WriteCase{Status::success, Status::success, true, false},
                                         WriteCase{Status::unavailable, Status::success, true, true},
                                         WriteCase{Status::failed, Status::success, false, false},
                                         WriteCase{Status::unavailable, Status::unavailable, false, true},
                                         WriteCase{Status::unavailable, Status::failed, false, true}));

TEST(Keychain, DeletionClearsBothPlacesWhateverTheyAnswer)
{
    for (const Status status : {Status::success, Status::notFound, Status::unavailable, Status::failed}) {
        QStringList calls;
        Keychain store = keychain({.removal = status}, {.removal = status}, calls);
        EXPECT_TRUE(store.set(std::nullopt, u"token"_s));
        EXPECT_EQ(calls, QStringList({u"1: remove app/token"_s, u"2: remove app/token"_s}));
    }
}

} // namespace

} // namespace orvia
