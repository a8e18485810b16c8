#include "Inventory.h"

#include "Session/KeyedTimers.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QNetworkAccessManager>
#include <QPixmapCache>
#include <QThread>

#include <malloc.h>
#include <unistd.h>

#include <mutex>
#include <unordered_set>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
/// Of the sanitizer's runtime, whose header for it comes with another compiler.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

/// The toolkit's hooks for tools that watch its objects; exported, declared in none of its public headers.
extern Q_CORE_EXPORT quintptr qtHookData[];

namespace orvia::test {

using namespace Qt::StringLiterals;

namespace {

enum HookIndex { addObjectHook = 3, removeObjectHook = 4 };

std::mutex mutex;

/// Never destroyed: objects die until the very end of the process.
std::unordered_set<QObject*>& livingObjects()
{
    static auto* const objects = new std::unordered_set<QObject*>;
    return *objects;
}

void objectAdded(QObject* object)
{
    const std::lock_guard lock(mutex);
    livingObjects().insert(object);
}

void objectRemoved(QObject* object)
{
    const std::lock_guard lock(mutex);
    livingObjects().erase(object);
}

/// Meanwhile no object dies, of whatever thread; @p visit must neither make nor delete one.
template <class Visit>
void forEachObject(Visit visit)
{
    const std::lock_guard lock(mutex);
    for (QObject* object : livingObjects())
        visit(object);
}

/// What a descriptor is, without the number that tells two of a kind apart.
std::string kindOf(const QString& link)
{
    char target[256];
    const ssize_t length = readlink(QFile::encodeName(link).constData(), target, sizeof target);
    const std::string name(target, static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    return name.substr(0, name.find(":["));
}

/// The pages that are this process's own; those of libraries depend on who else has loaded them.
qint64 anonymousMemory()
{
    QFile file(u"/proc/self/smaps_rollup"_s);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith("Anonymous:"))
            return line.mid(10).trimmed().chopped(3).toLongLong() * 1024;
    }
    return 0;
}

qint64 bytesHandedOut()
{
#if defined(__SANITIZE_ADDRESS__)
    return static_cast<qint64>(__sanitizer_get_current_allocated_bytes());
#else
    const struct mallinfo2 information = mallinfo2();
    return static_cast<qint64>(information.uordblks + information.hblkhd);
#endif
}

} // namespace

void Inventory::watchObjects()
{
    qtHookData[addObjectHook] = reinterpret_cast<quintptr>(&objectAdded);
    qtHookData[removeObjectHook] = reinterpret_cast<quintptr>(&objectRemoved);
}

Inventory Inventory::take()
{
    std::vector<QNetworkAccessManager*> managers;
    forEachObject([&](QObject* object) {
        if (auto* const manager = qobject_cast<QNetworkAccessManager*>(object))
            managers.push_back(manager);
    });
    for (QNetworkAccessManager* manager : managers)
        manager->clearConnectionCache();
    QPixmapCache::clear();
    for (int round = 0; round < 3; ++round) {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }

    Inventory inventory;
    forEachObject([&](QObject* object) {
        const char* const name = object->metaObject()->className();
        ++inventory.objects[name];
        if (object->thread() != QThread::currentThread())
            return;
        const auto timers = QAbstractEventDispatcher::instance()->registeredTimers(object);
        if (!timers.isEmpty())
            inventory.timers[name] += static_cast<int>(timers.size());
    });
    const QDir descriptors(u"/proc/self/fd"_s);
    for (const QString& entry : descriptors.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot))
        ++inventory.descriptors[kindOf(descriptors.filePath(entry))];
    malloc_trim(0);
    inventory.heapBytes = bytesHandedOut();
    inventory.anonymousBytes = anonymousMemory();
    return inventory;
}

qsizetype Inventory::pendingKeyedTimers()
{
    qsizetype count = 0;
    forEachObject([&](QObject* object) {
        if (const auto* timers = qobject_cast<KeyedTimers*>(object))
            count += timers->pendingCount();
    });
    return count;
}

std::string Inventory::difference(const Counts& before, const Counts& after)
{
    Counts change = after;
    for (const auto& [name, count] : before)
        change[name] -= count;
    std::string text;
    for (const auto& [name, count] : change) {
        if (count != 0)
            text += name + (count > 0 ? " +" : " ") + std::to_string(count) + '\n';
    }
    return text;
}

} // namespace orvia::test
