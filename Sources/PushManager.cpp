#include "PushManager.h"

namespace orvia {

PushManager::PushManager() = default;

PushManager& PushManager::shared()
{
    static PushManager manager;
    return manager;
}

void PushManager::start() { }

void PushManager::received(const QByteArray& token)
{
    deviceToken = QString::fromLatin1(token.toHex());
    if (onDeviceToken)
        onDeviceToken(*deviceToken);
}

void PushManager::handleTap(const QVariantMap& userInfo)
{
    const QVariant conversationId = userInfo.value(QStringLiteral("conversationId"));
    if (conversationId.typeId() == QMetaType::QString && onOpenConversation)
        onOpenConversation(conversationId.toString());
}

} // namespace orvia
