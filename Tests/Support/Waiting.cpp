#include "Support/Waiting.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

namespace orvia::test {

bool waitUntil(const std::function<bool()>& predicate, std::chrono::milliseconds bound)
{
    if (predicate())
        return true;
    const QDeadlineTimer deadline(bound);
    QEventLoop loop;
    QTimer check;
    bool held = false;
    QObject::connect(&check, &QTimer::timeout, &loop, [&] {
        held = predicate();
        if (held || deadline.hasExpired())
            loop.quit();
    });
    check.start(1);
    loop.exec();
    return held;
}

void spinFor(std::chrono::milliseconds duration)
{
    QEventLoop loop;
    QTimer::singleShot(duration, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace orvia::test
