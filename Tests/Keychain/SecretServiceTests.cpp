#include "PrivateKeyring.h"

#include "Keychain/Keychain.h"
#include "Platform/SecretService.h"
#include "Support/PrivateBus.h"

#include <gmock/gmock.h>

#include <QDirIterator>
#include <QFile>

#include <csignal>
#include <sys/stat.h>
#include <thread>

namespace orvia {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using test::PrivateBus;
using test::PrivateKeyring;

namespace {

const QString service = u"test.app"_s;
const QString key = u"agentToken"_s;
const PrivateKeyring::Attributes expectedAttributes{{u"service"_s, service}, {u"account"_s, key}};

/// Everything below the private data directory that is a file, with its contents.
QMap<QString, QByteArray> privateFiles(const PrivateBus& bus)
{
    QMap<QString, QByteArray> files;
    QDirIterator entries(bus.dataHome() + u"/orvia"_s, QDir::Files | QDir::Hidden,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        QFile file(entries.next());
        if (file.open(QIODevice::ReadOnly))
            files.insert(file.fileName(), file.readAll());
    }
    return files;
}

class KeychainOnDesktop : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(bus.isRunning()); }

    PrivateBus bus;
    Keychain keychain{service};
};

TEST_F(KeychainOnDesktop, KeepsReplacesAndDeletesAnItemInTheKeyring)
{
    PrivateKeyring keyring(bus);
    ASSERT_TRUE(keyring.isRunning());
    EXPECT_EQ(keychain.string(key), std::nullopt);

    EXPECT_TRUE(keychain.set(u"first \u20ac"_s, key));
    EXPECT_EQ(keychain.string(key), u"first \u20ac"_s);
    EXPECT_EQ(Keychain(service).string(key), u"first \u20ac"_s);
    EXPECT_EQ(keychain.string(u"otherKey"_s), std::nullopt);
    EXPECT_EQ(Keychain(u"other.app"_s).string(key), std::nullopt);

    EXPECT_TRUE(keychain.set(u"second"_s, key));
    EXPECT_EQ(keychain.string(key), u"second"_s);
    const QList<PrivateKeyring::Attributes> items = keyring.items();
    EXPECT_EQ(items, QList{expectedAttributes});
    EXPECT_TRUE(privateFiles(bus).isEmpty());

    EXPECT_TRUE(keychain.set(std::nullopt, key));
    EXPECT_EQ(keychain.string(key), std::nullopt);
    EXPECT_TRUE(keyring.items().isEmpty());
    EXPECT_TRUE(keychain.set(std::nullopt, key));
}

TEST_F(KeychainOnDesktop, ReadsWhatAnotherProgramStoredUnderTheSameAttributes)
{
    PrivateKeyring keyring(bus);
    ASSERT_TRUE(keyring.store(expectedAttributes, "from outside"));
    EXPECT_EQ(keychain.string(key), u"from outside"_s);

    // Damaged bytes count as no text, and the other place is not asked.
    ASSERT_TRUE(keychain.set(std::nullopt, key));
    ASSERT_TRUE(keyring.store(expectedAttributes, "\xff\xfe"));
    EXPECT_EQ(keychain.string(key), std::nullopt);
}

TEST_F(KeychainOnDesktop, RemovesEveryItemThatAnotherProgramLeft)
{
    PrivateKeyring keyring(bus);
    ASSERT_TRUE(keyring.store(expectedAttributes, "one"));
    PrivateKeyring::Attributes more = expectedAttributes;
    more.insert(u"extra"_s, u"x"_s);
    ASSERT_TRUE(keyring.store(more, "two"));
    ASSERT_EQ(keyring.items().size(), 2);
    EXPECT_TRUE(keychain.set(std::nullopt, key));
    EXPECT_TRUE(keyring.items().isEmpty());
}

TEST_F(KeychainOnDesktop, ALockedKeyringGivesNothingAndTheFileIsNotUsedInstead)
{
    PrivateKeyring keyring(bus);
    ASSERT_TRUE(keychain.set(u"secret"_s, key));
    ASSERT_TRUE(keyring.lock());
    EXPECT_EQ(keychain.string(key), std::nullopt);
    EXPECT_FALSE(keychain.set(u"other"_s, key));
    EXPECT_TRUE(privateFiles(bus).isEmpty());
}

TEST_F(KeychainOnDesktop, UsesThePrivateFileWhereNoSecretServiceAnswers)
{
    EXPECT_EQ(keychain.string(key), std::nullopt);
    EXPECT_TRUE(keychain.set(u"t\u00f6ken"_s, key));
    EXPECT_EQ(keychain.string(key), u"t\u00f6ken"_s);

    const auto files = privateFiles(bus);
    ASSERT_EQ(files.size(), 1);
    EXPECT_EQ(files.first(), u"t\u00f6ken"_s.toUtf8());
    struct stat status {};
    ASSERT_EQ(::stat(QFile::encodeName(files.firstKey()).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600u);

    {
        // A keyring that appears later holds no such item, so the file is still found; deletion clears both.
        PrivateKeyring keyring(bus);
        ASSERT_TRUE(keyring.isRunning());
        EXPECT_EQ(keychain.string(key), u"t\u00f6ken"_s);
        EXPECT_TRUE(keychain.set(u"newer"_s, key));
        EXPECT_EQ(keychain.string(key), u"newer"_s);
        EXPECT_TRUE(keychain.set(std::nullopt, key));
        EXPECT_TRUE(keyring.items().isEmpty());
        EXPECT_EQ(keychain.string(key), std::nullopt);
    }
    EXPECT_TRUE(privateFiles(bus).isEmpty());
    EXPECT_EQ(keychain.string(key), std::nullopt);
}

TEST_F(KeychainOnDesktop, WorksWithoutABus)
{
    {
        // A bus that ends takes no program with it.
        PrivateKeyring keyring(bus);
        ASSERT_TRUE(keychain.set(u"in the keyring"_s, key));
        bus.kill();
    }
    EXPECT_EQ(keychain.string(key), std::nullopt);
    EXPECT_TRUE(keychain.set(u"in the file"_s, key));
    EXPECT_EQ(keychain.string(key), u"in the file"_s);

    test::ScopedEnvironment environment;
    environment.unset("DBUS_SESSION_BUS_ADDRESS");
    environment.unset("DISPLAY");
    EXPECT_EQ(keychain.string(key), u"in the file"_s);
    EXPECT_TRUE(keychain.set(std::nullopt, key));
    EXPECT_TRUE(privateFiles(bus).isEmpty());
}

TEST_F(KeychainOnDesktop, AKeyringKilledBeforeItAnswersIsNoKeyring)
{
    PrivateKeyring keyring(bus);
    const auto daemon = static_cast<pid_t>(keyring.processId());
    ASSERT_EQ(::kill(daemon, SIGSTOP), 0);
    std::thread killer([daemon] {
        std::this_thread::sleep_for(50ms);
        ::kill(daemon, SIGKILL);
    });
    // Were the end of the daemon not noticed, this would wait for the limit and the test's own time would run
    // out.
    SecretService storage(u"Test"_s, {.answer = 1h, .question = 1h});
    EXPECT_EQ(storage.read(service, key).status, SecretStatus::unavailable);
    killer.join();
}

} // namespace

} // namespace orvia
