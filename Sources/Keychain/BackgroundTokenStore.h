#pragma once

#include "Keychain/TokenStore.h"

#include <QThreadPool>

#include <memory>

namespace orvia {

/// Writes to another token store in a thread of its own, one text after the other, so that a keyring that is
/// slow or waits for its user holds up nobody. Its end waits for what is still to be written.
class BackgroundTokenStore final : public TokenStore {
public:
    explicit BackgroundTokenStore(std::unique_ptr<TokenStore> store);

    /// Waits for what is still to be written.
    std::optional<QString> string(const QString& key) override;
    /// Answers true at once; whether the other store succeeds is not told.
    bool set(const std::optional<QString>& value, const QString& key) override;

private:
    const std::unique_ptr<TokenStore> m_store;
    QThreadPool m_writing;
};

} // namespace orvia
