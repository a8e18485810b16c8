#include "Keychain/Keychain.h"

#include "AppIdentity.h"
#include "Platform/PrivateFile.h"
#include "Platform/SecretService.h"

#include <QStandardPaths>
#include <QStringDecoder>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

std::vector<std::unique_ptr<SecretStorage>> storagesOfDesktop()
{
    const QString directory = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u'/'
                              + AppIdentity::directory + "/keychain"_L1;
    std::vector<std::unique_ptr<SecretStorage>> storages;
    storages.push_back(std::make_unique<SecretService>(QString(AppIdentity::displayName)));
    storages.push_back(std::make_unique<PrivateFileStorage>(directory));
    return storages;
}

std::optional<QString> decodedText(const QByteArray& bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

} // namespace

Keychain::Keychain(QString service)
    : Keychain(std::move(service), storagesOfDesktop())
{
}

Keychain::Keychain(QString service, std::vector<std::unique_ptr<SecretStorage>> storages)
    : m_service(std::move(service))
    , m_storages(std::move(storages))
{
}

Keychain::~Keychain() = default;

std::optional<QString> Keychain::string(const QString& key)
{
    for (const auto& storage : m_storages) {
        const SecretReading reading = storage->read(m_service, key);
        switch (reading.status) {
        case SecretStatus::success:
            return decodedText(reading.secret);
        case SecretStatus::failed:
            return std::nullopt;
        case SecretStatus::notFound:
        case SecretStatus::unavailable:
            break;
        }
    }
    return std::nullopt;
}

bool Keychain::set(const std::optional<QString>& value, const QString& key)
{
    for (const auto& storage : m_storages) {
        // There may have been nothing, and where there was something that cannot be removed, the addition
        // tells. Only a place that is not there is not asked twice, because it may take its time to say so.
        const bool isThere = storage->remove(m_service, key) != SecretStatus::unavailable;
        if (!value || !isThere)
            continue;
        switch (storage->add(value->toUtf8(), m_service, key)) {
        case SecretStatus::success:
            return true;
        case SecretStatus::unavailable:
            break;
        case SecretStatus::notFound:
        case SecretStatus::failed:
            return false;
        }
    }
    return !value;
}

} // namespace orvia
