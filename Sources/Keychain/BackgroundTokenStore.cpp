#include "Keychain/BackgroundTokenStore.h"

namespace orvia {

BackgroundTokenStore::BackgroundTokenStore(std::unique_ptr<TokenStore> store)
    : m_store(std::move(store))
{
    m_writing.setMaxThreadCount(1);
}

std::optional<QString> BackgroundTokenStore::string(const QString& key)
{
    m_writing.waitForDone();
    return m_store->string(key);
}

bool BackgroundTokenStore::set(const std::optional<QString>& value, const QString& key)
{
    m_writing.start([this, value, key] { m_store->set(value, key); });
    return true;
}

} // namespace orvia
