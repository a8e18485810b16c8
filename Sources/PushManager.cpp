#include "PushManager.h"

#include "AppIdentity.h"
#include "Platform/Notifications.h"
#include "Platform/PrivateFile.h"
#include "Platform/PushDistributor.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <QStringList>
#include <QUuid>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

// Push services carry messages of at most 4 kB; whatever is much larger is not one.
constexpr qsizetype longestMessage = 64 * 1024;

QString usualRegistrationFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u'/'
           + AppIdentity::directory + "/push-registration"_L1;
}

} // namespace

PushManager::PushManager() = default;
PushManager::~PushManager() = default;

PushManager& PushManager::shared()
{
    // Never destroyed: at the process's end the bus connection that it uses may be gone before it.
    static PushManager* const manager = new PushManager;
    return *manager;
}

void PushManager::connectToDesktop(PushSurroundings surroundings)
{
    if (m_notifications != nullptr)
        return;
    m_surroundings = std::move(surroundings);
    if (m_surroundings.registrationFile.isEmpty())
        m_surroundings.registrationFile = usualRegistrationFile();

    const NotificationSender sender{AppIdentity::displayName, AppIdentity::identifier};
    m_notifications = new Notifications(sender, m_surroundings.busConnection, this);
    connect(
        m_notifications, &Notifications::clicked, this,
        [this](const QVariantMap& userInfo, const QString& activationToken) {
            if (m_surroundings.bringToFront)
                m_surroundings.bringToFront(activationToken);
            handleTap(userInfo);
        },
        Qt::QueuedConnection);

    m_distributor = new PushDistributor(AppIdentity::identifier, m_surroundings.busConnection, this);
    connect(m_distributor, &PushDistributor::accepted, this,
            [this](const QString& token, const QString& distributor) {
                if (!isOwn(token) || m_registration.distributor == distributor)
                    return;
                m_registration.distributor = distributor;
                saveRegistration();
            });
    connect(m_distributor, &PushDistributor::endpointReceived, this,
            [this](const QString& token, const QString& endpoint) {
                if (!isOwn(token))
                    return;
                m_hasEndpoint = true;
                received(endpoint.toUtf8());
            });
    connect(m_distributor, &PushDistributor::messageReceived, this,
            [this](const QString& token, const QByteArray& message) {
                if (isOwn(token))
                    show(message);
            });
    connect(m_distributor, &PushDistributor::unregistered, this, [this](const QString& token) {
        if (!isOwn(token))
            return;
        // The next start, or the next distributor that comes, leads to a new registration.
        m_hasEndpoint = false;
        m_registration.distributor.clear();
        saveRegistration();
    });
    // At login the distributor and the notification server may come later than the console.
    connect(m_distributor, &PushDistributor::appeared, this, &PushManager::startAgain);
    connect(m_notifications, &Notifications::appeared, this, &PushManager::startAgain);
}

void PushManager::start()
{
    m_hasStarted = true;
    if (m_notifications == nullptr)
        return;
    m_notifications->askWhetherAvailable([this](bool isGranted) {
        if (isGranted)
            registerForRemoteNotifications();
    });
}

void PushManager::startAgain()
{
    if (m_hasStarted && !m_hasEndpoint)
        start();
}

void PushManager::registerForRemoteNotifications()
{
    loadRegistration();
    if (m_registration.token.isEmpty()) {
        m_registration.token = QUuid::createUuid().toString(QUuid::WithoutBraces);
        saveRegistration();
    }
    m_distributor->registerConnector(m_registration.token, AppIdentity::displayName,
                                     m_registration.distributor);
}

void PushManager::received(const QByteArray& token)
{
    deviceToken = QString::fromLatin1(token.toHex());
    if (onDeviceToken)
        onDeviceToken(*deviceToken);
}

void PushManager::show(const QByteArray& message)
{
    if (message.size() > longestMessage)
        return;
    const QJsonDocument document = QJsonDocument::fromJson(message);
    if (!document.isObject())
        return;
    const QJsonObject object = document.object();
    const QString title = object.value("title"_L1).toString();
    const QString body = object.value("body"_L1).toString();
    if (title.isEmpty() && body.isEmpty())
        return;
    m_notifications->present({
        .title = title.isEmpty() ? QString(AppIdentity::displayName) : title,
        .body = body,
        .isTransient = m_surroundings.isFrontmost && m_surroundings.isFrontmost(),
        .hasSound = true,
        .userInfo = object.toVariantMap(),
    });
}

void PushManager::handleTap(const QVariantMap& userInfo)
{
    const QVariant conversationId = userInfo.value(u"conversationId"_s);
    if (conversationId.typeId() == QMetaType::QString && onOpenConversation)
        onOpenConversation(conversationId.toString());
}

bool PushManager::isOwn(const QString& token)
{
    loadRegistration();
    return !token.isEmpty() && token == m_registration.token;
}

void PushManager::loadRegistration()
{
    if (!m_registration.token.isEmpty())
        return;
    const QByteArray contents = PrivateFile(m_surroundings.registrationFile).read().value_or(QByteArray());
    const QStringList lines = QString::fromUtf8(contents).split(u'\n');
    // A damaged file must not become a registration that others could guess.
    if (QUuid::fromString(lines.value(0)).isNull())
        return;
    m_registration = {lines.value(0), lines.value(1)};
}

void PushManager::saveRegistration() const
{
    const QString contents = m_registration.token + u'\n' + m_registration.distributor + u'\n';
    PrivateFile(m_surroundings.registrationFile).write(contents.toUtf8());
}

} // namespace orvia
