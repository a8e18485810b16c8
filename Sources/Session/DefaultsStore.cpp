#include "Session/DefaultsStore.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

namespace orvia {

using namespace Qt::StringLiterals;

DefaultsStore::DefaultsStore()
    : DefaultsStore(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
                    + "/orvia/defaults.ini"_L1)
{
}

DefaultsStore::DefaultsStore(QString file)
    : m_file(std::move(file))
{
}

std::optional<QByteArray> DefaultsStore::data(const QString& key) const
{
    const QVariant value = QSettings(m_file, QSettings::IniFormat).value(key);
    if (value.typeId() != QMetaType::QByteArray)
        return std::nullopt;
    return value.toByteArray();
}

void DefaultsStore::setData(const QByteArray& value, const QString& key)
{
    if (data(key) == value)
        return;
    QDir().mkpath(QFileInfo(m_file).absolutePath());
    QSettings settings(m_file, QSettings::IniFormat);
    settings.setAtomicSyncRequired(true);
    // A file that does not parse would make every later write fail with it.
    if (settings.status() == QSettings::FormatError)
        settings.clear();
    settings.setValue(key, value);
}

void DefaultsStore::remove(const QString& key)
{
    QSettings settings(m_file, QSettings::IniFormat);
    settings.setAtomicSyncRequired(true);
    settings.remove(key);
}

} // namespace orvia
