#include "Platform/Appearance.h"

#include "Platform/MessageBus.h"

#include <QDBusServiceWatcher>
#include <QDBusVariant>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr auto portalName = "org.freedesktop.portal.Desktop"_L1;
constexpr auto portalPath = "/org/freedesktop/portal/desktop"_L1;
constexpr auto settingsInterface = "org.freedesktop.portal.Settings"_L1;
constexpr auto appearanceNamespace = "org.freedesktop.appearance"_L1;
constexpr auto schemeKey = "color-scheme"_L1;

/// The setting's value: 1 prefers dark, 2 prefers light, anything else prefers nothing. Portals answer it
/// wrapped in one variant or in two.
std::optional<Appearance::Scheme> schemeOf(QVariant value)
{
    while (value.metaType() == QMetaType::fromType<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    if (value.typeId() != QMetaType::UInt)
        return std::nullopt;
    switch (value.toUInt()) {
    case 1:
        return Appearance::Scheme::dark;
    case 2:
        return Appearance::Scheme::light;
    default:
        return std::nullopt;
    }
}

} // namespace

class Appearance::Listener : public QObject {
    Q_OBJECT

public:
    Listener(Appearance& owner, const QDBusConnection& bus)
        : m_owner(owner)
        , m_bus(bus)
    {
        if (!m_bus.isConnected())
            return;
        // The toolkit looks the slot's types up by their names, which it has not met before the first answer.
        qRegisterMetaType<QDBusVariant>();
        m_bus.connect(portalName, portalPath, settingsInterface, u"SettingChanged"_s, this,
                      SLOT(onSettingChanged(QString, QString, QDBusVariant)));
        auto* watcher =
            new QDBusServiceWatcher(portalName, m_bus, QDBusServiceWatcher::WatchForRegistration, this);
        connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &Listener::read);
        read();
    }

private Q_SLOTS:
    void onSettingChanged(const QString& settingNamespace, const QString& key, const QDBusVariant& value)
    {
        if (settingNamespace == appearanceNamespace && key == schemeKey)
            m_owner.setPreferred(schemeOf(value.variant()));
    }

private:
    void read()
    {
        QDBusMessage call =
            QDBusMessage::createMethodCall(portalName, portalPath, settingsInterface, u"Read"_s);
        call << QString(appearanceNamespace) << QString(schemeKey);
        sendCall(m_bus, call, this, [this](const QDBusMessage& reply) {
            if (reply.type() == QDBusMessage::ReplyMessage)
                m_owner.setPreferred(schemeOf(reply.arguments().value(0)));
        });
    }

    Appearance& m_owner;
    QDBusConnection m_bus;
};

Appearance::Appearance(const QString& busConnection, QObject* parent)
    : QObject(parent)
    , m_listener(std::make_unique<Listener>(*this, busNamed(busConnection)))
{
}

Appearance::~Appearance() = default;

void Appearance::setPreferred(std::optional<Scheme> preferred)
{
    if (preferred == m_preferred)
        return;
    m_preferred = preferred;
    Q_EMIT changed();
}

} // namespace orvia

#include "Appearance.moc"
