#pragma once

#include <QString>
#include <QUrl>
#include <QVariant>

namespace orvia {

/// Where the service is. Main thread only.
namespace AppConfig {

/// Reads the configuration from @p file (INI, top-level key "APIBaseURL") instead of orvia/orvia.conf in the
/// XDG configuration directories. Has an effect only before the first call of @c apiBaseURL().
void setConfigurationFile(const QString& file);

/// The service's origin: the configured one where it is acceptable, else the one the build fixed.
/// Worked out at first use and never changed afterwards.
const QUrl& apiBaseURL();

/// The rule behind @c apiBaseURL(): @p entry when it is a non-empty text that does not begin with "$(" and
/// parses as a URL whose scheme is written exactly "https" or "http"; else @p fallback.
QUrl acceptedBaseURL(const QVariant& entry, const QUrl& fallback);

} // namespace AppConfig

} // namespace orvia
