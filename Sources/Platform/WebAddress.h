#pragma once

#include <QUrl>

namespace orvia {

/// Whether @p url is an address of the web, whose scheme is http or https. Only such addresses of strangers
/// are opened: others could start a program or reach into local files.
inline bool isWebAddress(const QUrl& url)
{
    // QUrl keeps schemes in lower case.
    return url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
}

} // namespace orvia
