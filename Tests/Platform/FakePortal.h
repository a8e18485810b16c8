#pragma once

#include "Support/BusPeers.h"

#include <QDBusVariant>

namespace orvia::test {

/// The settings part of a desktop portal, with one setting.
class FakePortal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    /// Older portals wrap the value that is read in a second variant.
    FakePortal(const PrivateBus& bus, QVariant value, bool isWrappedTwice)
        : m_value(std::move(value))
        , m_isWrappedTwice(isWrappedTwice)
        , m_bus(bus)
    {
        m_bus.connection().registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), this,
                                          QDBusConnection::ExportAllSlots
                                              | QDBusConnection::ExportAllSignals);
        m_bus.connection().registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
    }

    int reads = 0;

public Q_SLOTS:
    QDBusVariant Read(const QString& settingNamespace, const QString& key)
    {
        ++reads;
        if (settingNamespace != QStringLiteral("org.freedesktop.appearance")
            || key != QStringLiteral("color-scheme"))
            return QDBusVariant(QString());
        const QDBusVariant once(m_value);
        return m_isWrappedTwice ? QDBusVariant(QVariant::fromValue(once)) : once;
    }

Q_SIGNALS:
    void SettingChanged(const QString& settingNamespace, const QString& key, const QDBusVariant& value);

private:
    QVariant m_value;
    bool m_isWrappedTwice;
    BusConnection m_bus;
};

} // namespace orvia::test
