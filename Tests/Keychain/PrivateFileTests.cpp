#include "Platform/PrivateFile.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <sys/stat.h>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

mode_t modeOf(const QString& path)
{
    struct stat status {};
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777 : 0;
}

class PrivateFileTest : public testing::Test {
protected:
    QTemporaryDir directory;
    QString path = directory.filePath(u"a/b/secret"_s);
    PrivateFile file{path};
};

TEST_F(PrivateFileTest, IsClosedToOthersWhateverTheUmask)
{
    const mode_t earlier = ::umask(0);
    EXPECT_TRUE(file.write("one"));
    ::umask(earlier);
    EXPECT_EQ(modeOf(path), 0600u);
    EXPECT_EQ(modeOf(directory.filePath(u"a/b"_s)), 0700u);
    EXPECT_EQ(modeOf(directory.filePath(u"a"_s)), 0700u);

    ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0644), 0);
    EXPECT_EQ(file.read(), "one");
    EXPECT_EQ(modeOf(path), 0600u) << "what was open to others is closed by the next reading";
}

TEST_F(PrivateFileTest, ReplacesTheWholeFileAndLeavesNothingElseBehind)
{
    ASSERT_TRUE(file.write("a longer first text"));
    QFile earlier(path);
    ASSERT_TRUE(earlier.open(QIODevice::ReadOnly));
    ASSERT_TRUE(file.write("two"));
    EXPECT_EQ(file.read(), "two");
    // Whoever had the old file open still reads the old contents: it was replaced, not overwritten.
    EXPECT_EQ(earlier.readAll(), "a longer first text");

    EXPECT_FALSE(file.write(QByteArray(PrivateFile::sizeLimit + 1, 'x')));
    EXPECT_EQ(file.read(), "two");
    EXPECT_EQ(QDir(directory.filePath(u"a/b"_s)).entryList(QDir::Files | QDir::Hidden),
              QStringList{u"secret"_s});

    // A directory in the file's place can neither be replaced nor read.
    const PrivateFile blocked(directory.filePath(u"a/b"_s));
    EXPECT_FALSE(blocked.write("three"));
    EXPECT_EQ(blocked.read(), std::nullopt);
    EXPECT_FALSE(blocked.remove());
    EXPECT_EQ(QDir(directory.filePath(u"a"_s)).entryList(QDir::Files | QDir::Hidden), QStringList());

    const PrivateFile below(path + u"/below"_s);
    EXPECT_FALSE(below.write("three"));
    EXPECT_TRUE(below.remove());
    EXPECT_TRUE(file.remove());
    EXPECT_FALSE(file.exists());
    EXPECT_TRUE(file.remove()) << "nothing is left of it";
}

TEST_F(PrivateFileTest, ReadsOnlyARegularFileWithinTheLimit)
{
    ASSERT_TRUE(QDir().mkpath(directory.filePath(u"a/b"_s)));
    EXPECT_EQ(file.read(), std::nullopt) << "absent";

    ASSERT_EQ(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    EXPECT_EQ(file.read(), std::nullopt) << "a pipe without a writer";
    ASSERT_TRUE(file.remove());

    QFile elsewhere(directory.filePath(u"elsewhere"_s));
    ASSERT_TRUE(elsewhere.open(QIODevice::WriteOnly));
    elsewhere.write("somebody else's");
    elsewhere.close();
    ASSERT_TRUE(elsewhere.link(path));
    EXPECT_EQ(file.read(), std::nullopt) << "a link";
    ASSERT_TRUE(file.write("own"));
    EXPECT_FALSE(QFileInfo(path).isSymLink());
    EXPECT_EQ(file.read(), "own");

    QFile tooLarge(path);
    ASSERT_TRUE(tooLarge.resize(PrivateFile::sizeLimit + 1));
    EXPECT_EQ(file.read(), std::nullopt) << "too large";
}

TEST_F(PrivateFileTest, StorageKeepsEntriesApart)
{
    PrivateFileStorage storage(directory.filePath(u"keychain"_s));
    const std::pair<QString, QString> entries[] = {
        {u"a"_s, u"b"_s}, {u"a/b"_s, u""_s}, {u""_s, u"a/b"_s}, {u".."_s, u".."_s}, {u"."_s, u"\u00e9"_s},
    };
    for (const auto& [service, account] : entries)
        EXPECT_EQ(storage.add((service + u'|' + account).toUtf8(), service, account), SecretStatus::success);
    for (const auto& [service, account] : entries) {
        EXPECT_EQ(storage.read(service, account).secret, (service + u'|' + account).toUtf8());
        EXPECT_EQ(storage.remove(service, account), SecretStatus::success);
        EXPECT_EQ(storage.read(service, account).status, SecretStatus::notFound);
    }
    EXPECT_EQ(QDir(directory.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList{u"keychain"_s});
}

} // namespace

} // namespace orvia
