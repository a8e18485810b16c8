#pragma once

#include "Keychain/TokenStore.h"
#include "Platform/SecretStorage.h"

#include <memory>
#include <vector>

namespace orvia {

/// The token store over the desktop: first its Secret Service, then, only where none answers, a file that
/// none but this user can read. An entry's service is the one given here, its account is the key, its secret
/// the UTF-8 bytes of the text. A keyring that does not answer, or whose unlock question nobody answers,
/// delays a call by the bounds in @c SecretServiceLimits and no more.
class Keychain final : public TokenStore {
public:
    /// The two places of this desktop.
    explicit Keychain(QString service);
    /// Other places, tried in the order given.
    Keychain(QString service, std::vector<std::unique_ptr<SecretStorage>> storages);
    ~Keychain() override;

    std::optional<QString> string(const QString& key) override;
    bool set(const std::optional<QString>& value, const QString& key) override;

private:
    QString m_service;
    std::vector<std::unique_ptr<SecretStorage>> m_storages;
};

} // namespace orvia
