#include "AppConfig.h"

#include <QSettings>
#include <QStandardPaths>

namespace orvia::AppConfig {

using namespace Qt::StringLiterals;

namespace {

QString& chosenFile()
{
    static QString file;
    return file;
}

QVariant configuredEntry()
{
    const auto entryIn = [](const QString& file) {
        return QSettings(file, QSettings::IniFormat).value("APIBaseURL"_L1);
    };
    if (!chosenFile().isEmpty())
        return entryIn(chosenFile());
    // The user's directory comes before the system's; the first file that has the entry decides.
    const QStringList files =
        QStandardPaths::locateAll(QStandardPaths::GenericConfigLocation, u"orvia/orvia.conf"_s);
    for (const QString& file : files) {
        if (QVariant entry = entryIn(file); entry.isValid())
            return entry;
    }
    return {};
}

} // namespace

void setConfigurationFile(const QString& file)
{
    chosenFile() = file;
}

QUrl acceptedBaseURL(const QVariant& entry, const QUrl& fallback)
{
    if (entry.typeId() != QMetaType::QString)
        return fallback;
    const QString text = entry.toString();
    if (text.isEmpty() || text.startsWith("$("_L1))
        return fallback;
    // The scheme is judged as written: parsing would turn it into lower case.
    if (!text.startsWith("https:"_L1) && !text.startsWith("http:"_L1))
        return fallback;
    const QUrl url(text);
    return url.isValid() ? url : fallback;
}

const QUrl& apiBaseURL()
{
    static const QUrl url = [] {
        const QUrl fallback(QStringLiteral(ORVIA_API_BASE_URL), QUrl::StrictMode);
        Q_ASSERT_X(fallback.isValid(), "AppConfig", "the build's own origin must parse");
        return acceptedBaseURL(configuredEntry(), fallback);
    }();
    return url;
}

} // namespace orvia::AppConfig
