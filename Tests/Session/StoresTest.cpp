#include "SessionFixture.h"

#include "Session/KeyedTimers.h"

#include <QFile>
#include <QFileInfo>

namespace orvia::test {

using namespace std::chrono_literals;
using testing::ElementsAre;

TEST(DefaultsStoreTest, KeepsBytesAsTheyAre)
{
    const QTemporaryDir directory;
    const QString file = directory.filePath(u"new/defaults.ini"_s);
    QByteArray bytes;
    for (int i = 0; i < 256; ++i)
        bytes.append(static_cast<char>(i));
    DefaultsStore(file).setData(bytes, u"key"_s);
    DefaultsStore(file).setData("{\"a\":\"\xC3\xA4, ;=%\"}", u"other"_s);
    EXPECT_EQ(DefaultsStore(file).data(u"key"_s), bytes);
    EXPECT_EQ(DefaultsStore(file).data(u"other"_s), "{\"a\":\"\xC3\xA4, ;=%\"}");
    DefaultsStore(file).remove(u"key"_s);
    EXPECT_FALSE(DefaultsStore(file).data(u"key"_s));
    EXPECT_TRUE(DefaultsStore(file).data(u"other"_s));
}

TEST(DefaultsStoreTest, AValueThatIsThereIsNotWrittenAgain)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(u"defaults.ini"_s);
    DefaultsStore store(path);
    store.setData("value", u"key"_s);
    // A write would replace the file by one that can be written to.
    ASSERT_TRUE(QFile::setPermissions(path, QFile::ReadOwner));
    const QFile::Permissions permissions = QFile::permissions(path);
    store.setData("value", u"key"_s);
    EXPECT_EQ(QFile::permissions(path), permissions);
    store.setData("other", u"key"_s);
    EXPECT_EQ(store.data(u"key"_s), "other");
}

TEST(DefaultsStoreTest, ADamagedFileStartsCleanAndIsReplaced)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(u"defaults.ini"_s);
    const QByteArray damages[] = {QByteArray("\x00\xFF\xFE[[[\n=\n%%%", 12), QByteArray("key=@ByteArray("),
                                  QByteArray("key=text"), QByteArray(4096, '\xFF')};
    for (const QByteArray& damage : damages) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(damage);
        file.close();
        DefaultsStore store(path);
        store.setData("good", u"cachedIdentity"_s);
        EXPECT_EQ(DefaultsStore(path).data(u"cachedIdentity"_s), "good");
        EXPECT_FALSE(DefaultsStore(path).data(u"key"_s) == QByteArray("text")) << "a text is no byte value";
    }
}

TEST(DefaultsStoreTest, AnUnwritablePlaceIsSilent)
{
    DefaultsStore store(u"/proc/no/such/place.ini"_s);
    store.setData("x", u"key"_s);
    store.remove(u"key"_s);
    EXPECT_FALSE(store.data(u"key"_s));
}

TEST(KeyedTimersTest, FireOncePerStartAndNeverWhenCancelled)
{
    QStringList fired;
    KeyedTimers timers(20ms, [&](const QString& key) { fired.append(key); });
    timers.start(u"a"_s);
    timers.start(u"b"_s);
    timers.start(u"a"_s);
    timers.start(u"c"_s);
    timers.cancel(u"b"_s);
    timers.cancel(u"unknown"_s);
    EXPECT_EQ(timers.pendingCount(), 2);
    EXPECT_TRUE(waitUntil([&] { return timers.pendingCount() == 0; }));
    EXPECT_THAT(fired, ElementsAre(u"a"_s, u"c"_s));
}

TEST(KeyedTimersTest, AnActionMayStartAndCancelTimers)
{
    QStringList fired;
    KeyedTimers* all = nullptr;
    KeyedTimers timers(5ms, [&](const QString& key) {
        fired.append(key);
        all->cancel(u"b"_s);
        if (fired.size() < 3)
            all->start(u"a"_s);
    });
    all = &timers;
    timers.start(u"a"_s);
    timers.start(u"b"_s);
    EXPECT_TRUE(waitUntil([&] { return fired.size() == 3; }));
    EXPECT_THAT(fired, ElementsAre(u"a"_s, u"a"_s, u"a"_s));
}

} // namespace orvia::test
