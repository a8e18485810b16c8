#include "SessionFixture.h"

#include "Session/KeyedTimers.h"

#include <QFile>

namespace orvia::test {

using namespace std::chrono_literals;
using testing::ElementsAre;

TEST(DefaultsStoreTest, ADamagedFileStartsCleanAndIsReplaced)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(u"defaults.ini"_s);
    const QByteArray damages[] = {QByteArray("\x00\xFF\xFE[[[\n=\n%%%", 12), QByteArray("key=@ByteArray("),
                                  QByteArray("key=text"), QByteArray(4096, '\xFF')};
    const QByteArray identity("{\"a\":\"\xC3\xA4, ;=%\0\n\"}", 17);
    for (const QByteArray& damage : damages) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(damage);
        file.close();
        DefaultsStore(path).setData(identity, u"cachedIdentity"_s);
        EXPECT_EQ(DefaultsStore(path).data(u"cachedIdentity"_s), identity);
        EXPECT_FALSE(DefaultsStore(path).data(u"key"_s) == QByteArray("text")) << "a text is no byte value";
    }
}

TEST(KeyedTimersTest, FireOnceAfterTheirLastStartAndNeverWhenCancelled)
{
    QStringList fired;
    KeyedTimers timers(20ms, [&](const QString& key) { fired.append(key); });
    for (const QString& key : {u"restarted"_s, u"cancelled"_s, u"other"_s, u"restarted"_s})
        timers.start(key);
    timers.cancel(u"cancelled"_s);
    timers.cancel(u"unknown"_s);
    EXPECT_TRUE(waitUntil([&] { return timers.pendingCount() == 0; }));
    EXPECT_THAT(fired, ElementsAre(u"other"_s, u"restarted"_s));
}

} // namespace orvia::test
