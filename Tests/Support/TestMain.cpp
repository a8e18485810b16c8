#include "Support/TestMain.h"

#include <QLocale>

#include <clocale>
#include <ctime>

#if defined(__SANITIZE_ADDRESS__)
#include <pthread.h>

/// When the process ends, the toolkit deletes the key by which threads find their data. A thread that is just
/// ending then keeps its own, and the check for leaks reports it. So keys stay: the process ends anyway.
extern "C" int pthread_key_delete(pthread_key_t) noexcept
{
    return 0;
}
#endif

namespace orvia::test {

void pinEnvironment(const QTemporaryDir& home)
{
    for (const char* proxy :
         {"http_proxy", "https_proxy", "all_proxy", "HTTP_PROXY", "HTTPS_PROXY", "ALL_PROXY"})
        qunsetenv(proxy);
    qputenv("LC_ALL", "C.UTF-8");
    std::setlocale(LC_ALL, "C.UTF-8");
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    qputenv("TZ", "UTC");
    tzset();

    const QByteArray root = home.path().toUtf8();
    qputenv("HOME", root);
    qputenv("XDG_CONFIG_HOME", root + "/config");
    qputenv("XDG_DATA_HOME", root + "/data");
    qputenv("XDG_CACHE_HOME", root + "/cache");
    qputenv("XDG_CONFIG_DIRS", root + "/etc");
}

} // namespace orvia::test
