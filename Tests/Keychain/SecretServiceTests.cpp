#include "PrivateKeyring.h"

#include "Keychain/Keychain.h"

#include <gmock/gmock.h>

#include <QDirIterator>
#include <QFile>

namespace orvia {

using namespace Qt::StringLiterals;
using test::PrivateBus;
using test::PrivateKeyring;

namespace {

const QString service = u"test.app"_s;
const QString key = u"agentToken"_s;
const QStringList attributes{u"service"_s, service, u"account"_s, key};

class KeychainOnDesktop : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(bus.isRunning()); }

    /// The contents of every file below the private data directory.
    QList<QByteArray> privateFiles() const
    {
        QList<QByteArray> contents;
        QDirIterator entries(bus.dataHome() + u"/orvia"_s, QDir::Files | QDir::Hidden,
                             QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            QFile file(entries.next());
            if (file.open(QIODevice::ReadOnly))
                contents.append(file.readAll());
        }
        return contents;
    }

    PrivateBus bus;
    Keychain keychain{service};
};

TEST_F(KeychainOnDesktop, SharesItsItemWithOtherProgramsAndRemovesEveryOneOfThat)
{
    PrivateKeyring keyring(bus);
    ASSERT_TRUE(keyring.store(attributes, "from outside"));
    EXPECT_EQ(keychain.string(key), u"from outside"_s);
    EXPECT_EQ(keychain.string(u"otherKey"_s), std::nullopt);
    EXPECT_EQ(Keychain(u"other.app"_s).string(key), std::nullopt);
    EXPECT_TRUE(keychain.set(u"own \u20ac"_s, key));
    EXPECT_EQ(keyring.secret(attributes), "own \xe2\x82\xac");
    EXPECT_EQ(keychain.string(key), u"own \u20ac"_s);

    const QStringList extra{u"extra"_s, u"x"_s};
    ASSERT_TRUE(keyring.store(attributes + extra, "two"));
    ASSERT_EQ(keyring.secret(extra), "two");
    EXPECT_TRUE(keychain.set(std::nullopt, key));
    EXPECT_EQ(keyring.secret(attributes), "");
    EXPECT_THAT(privateFiles(), testing::IsEmpty());
}

TEST_F(KeychainOnDesktop, UsesThePrivateFileWhereNoSecretServiceAnswers)
{
    EXPECT_TRUE(keychain.set(u"t\u00f6ken"_s, key));
    EXPECT_THAT(privateFiles(), testing::ElementsAre(u"t\u00f6ken"_s.toUtf8()));

    // A keyring that appears later holds no such item, so the file is still found; deletion clears both.
    PrivateKeyring keyring(bus);
    ASSERT_TRUE(keyring.isRunning());
    EXPECT_EQ(keychain.string(key), u"t\u00f6ken"_s);
    EXPECT_TRUE(keychain.set(u"newer"_s, key));
    EXPECT_EQ(keychain.string(key), u"newer"_s);
    EXPECT_TRUE(keychain.set(std::nullopt, key));
    EXPECT_EQ(keyring.secret(attributes), "");
    EXPECT_THAT(privateFiles(), testing::IsEmpty());
}

} // namespace

} // namespace orvia
