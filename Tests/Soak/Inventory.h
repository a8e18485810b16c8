#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QNetworkAccessManager>
#include <QPixmapCache>
#include <QThreadPool>

#include <malloc.h>

#include <map>
#include <mutex>
#include <string>
#include <unordered_set>
#include <vector>

/// The toolkit's hooks for tools that watch its objects; exported, declared in none of its public headers.
extern Q_CORE_EXPORT quintptr qtHookData[];

namespace orvia::test {

/// What this process holds at one moment, each thing under its kind, so that two moments can be compared.
class Inventory {
public:
    /// Begins to watch what objects are made. Once, before the first of those that are to be counted.
    static void watchObjects()
    {
        enum HookIndex { addObjectHook = 3, removeObjectHook = 4 };
        qtHookData[addObjectHook] = reinterpret_cast<quintptr>(+[](QObject* object) {
            const std::lock_guard lock(s_mutex);
            s_objects.insert(object);
        });
        qtHookData[removeObjectHook] = reinterpret_cast<quintptr>(+[](QObject* object) {
            const std::lock_guard lock(s_mutex);
            s_objects.erase(object);
        });
    }

    template <class Object>
    static std::vector<Object*> living()
    {
        std::vector<Object*> found;
        forEachObject([&](QObject* object) {
            if (auto* const fitting = qobject_cast<Object*>(object))
                found.push_back(fitting);
        });
        return found;
    }

    /// Idle network connections and threads come and go on their own; they are closed first. Main thread.
    static Inventory take()
    {
        for (QNetworkAccessManager* manager : living<QNetworkAccessManager>())
            manager->clearConnectionCache();
        QPixmapCache::clear();
        for (int round = 0; round < 3; ++round) {
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            QCoreApplication::processEvents();
        }
        QThreadPool::globalInstance()->waitForDone();

        Inventory inventory;
        forEachObject([&](QObject* object) {
            // The toolkit forgets the gestures of widgets that are gone whenever it next looks at them.
            if (!object->inherits("QGesture"))
                ++inventory.m_counts[object->metaObject()->className()];
        });
        const QDir descriptors(QStringLiteral("/proc/self/fd"));
        for (const QString& entry :
             descriptors.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)) {
            // Without the number that tells two of a kind apart.
            const QString target = QFile::symLinkTarget(descriptors.filePath(entry)).section(u':', 0, 0);
            ++inventory.m_counts[target.toStdString()];
        }
        const struct mallinfo2 information = mallinfo2();
        inventory.heapBytes = information.uordblks + information.hblkhd;
        return inventory;
    }

    /// What @p after has more or fewer of than this, a line each; empty when they are equal.
    std::string difference(const Inventory& after) const
    {
        auto change = after.m_counts;
        for (const auto& [name, count] : m_counts)
            change[name] -= count;
        std::string text;
        for (const auto& [name, count] : change) {
            if (count != 0)
                text += name + ' ' + std::to_string(count) + '\n';
        }
        return text;
    }

    std::size_t heapBytes = 0; ///< handed out by the allocator; a sanitizer's tells nothing

private:
    /// Meanwhile no object dies, of whatever thread; @p visit must neither make nor delete one.
    template <class Visit>
    static void forEachObject(Visit visit)
    {
        const std::lock_guard lock(s_mutex);
        for (QObject* object : s_objects)
            visit(object);
    }

    inline static std::mutex s_mutex;
    /// Never destroyed: objects die until the very end of the process.
    inline static auto& s_objects = *new std::unordered_set<QObject*>;

    std::map<std::string, int> m_counts; ///< living objects by class, open files, sockets and pipes
};

} // namespace orvia::test
