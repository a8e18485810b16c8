#include "Support/TestMain.h"

#include <QLocale>

#include <clocale>
#include <ctime>

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
