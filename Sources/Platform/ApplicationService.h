#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include <chrono>
#include <memory>

class QDBusMessage;

namespace orvia {

/// One instance of the program per user over org.freedesktop.Application (Desktop Entry Specification 1.5,
/// "D-Bus Activation"). Main thread.
class ApplicationService : public QObject {
    Q_OBJECT

public:
    enum class Start {
        /// This is the user's one instance; later starts and the desktop reach it.
        first,
        /// Another instance runs and knows what was asked for; this one may end.
        handedOver,
        /// There is nobody to share the user with: no session bus, or a stranger under this program's name.
        alone,
    };

    /// @p identifier is the program's reverse-domain name. @p busConnection names a QtDBus connection; the
    /// session bus when it is empty.
    explicit ApplicationService(QString identifier, const QString& busConnection = {},
                                QObject* parent = nullptr);
    ~ApplicationService() override;

    /// Claims the name, or asks the other instance to open the links or to come to the front; in the
    /// background and without links it has nothing to ask. The one call of this layer that waits: for the
    /// other instance's answer, at most @p patience. A first instance's own links are its caller's business.
    Start start(const QStringList& links, bool isInBackground = false,
                std::chrono::milliseconds patience = std::chrono::seconds(5));

Q_SIGNALS:
    /// The program shall come to the front. The token, which may be empty, lets its window do so where the
    /// desktop asks for one.
    void activated(const QString& activationToken);
    /// The program shall open these links and come to the front.
    void opened(const QStringList& links, const QString& activationToken);

private:
    class Interface;
    enum class Delivery { done, recipientGone, refused };

    QDBusMessage messageFor(const QStringList& links, bool isInBackground) const;
    Delivery deliver(const QDBusMessage& message, std::chrono::milliseconds patience) const;

    const QString m_identifier;
    const QString m_objectPath;
    const QString m_busConnection;
    const std::unique_ptr<Interface> m_interface;
};

} // namespace orvia
