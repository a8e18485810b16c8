#include "Platform/SecretService.h"

#include "Platform/SecretServiceModule.h"

#include <QFile>
#include <QFileInfo>

#include <dlfcn.h>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

using Factory = decltype(&orviaSecretService);

/// Loads the module, which stays loaded because its threads may outlive every call. It lies at the same place
/// relative to the program in the build directory and where it is installed.
Factory loadFactory()
{
    const QString program = QFileInfo(u"/proc/self/exe"_s).symLinkTarget();
    const QString module = QFileInfo(program).path() + "/" ORVIA_SECRET_SERVICE_MODULE ""_L1;
    void* library = ::dlopen(QFile::encodeName(module).constData(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    void* symbol = library == nullptr ? nullptr : ::dlsym(library, "orviaSecretService");
    if (symbol == nullptr)
        qWarning("The keyring cannot be used: %s", ::dlerror());
    return reinterpret_cast<Factory>(symbol);
}

Factory factory()
{
    static const Factory loaded = loadFactory();
    return loaded;
}

} // namespace

SecretService::SecretService(QString label, SecretServiceLimits limits)
    : m_label(std::move(label))
    , m_limits(limits)
{
}

void SecretService::load()
{
    factory();
}

SecretReading SecretService::read(const QString& service, const QString& account)
{
    const auto storage = loaded();
    return storage ? storage->read(service, account) : SecretReading{SecretStatus::unavailable, {}};
}

SecretStatus SecretService::add(const QByteArray& secret, const QString& service, const QString& account)
{
    const auto storage = loaded();
    return storage ? storage->add(secret, service, account) : SecretStatus::unavailable;
}

SecretStatus SecretService::remove(const QString& service, const QString& account)
{
    const auto storage = loaded();
    return storage ? storage->remove(service, account) : SecretStatus::unavailable;
}

std::unique_ptr<SecretStorage> SecretService::loaded() const
{
    const Factory make = factory();
    return std::unique_ptr<SecretStorage>(make == nullptr ? nullptr : make(m_label, m_limits));
}

} // namespace orvia
