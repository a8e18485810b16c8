#include <libsecret/secret.h>

#include "Platform/SecretServiceModule.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

namespace orvia {

namespace {

using Clock = std::chrono::steady_clock;

struct ObjectRelease {
    void operator()(gpointer object) const { g_object_unref(object); }
};
struct ObjectListRelease {
    void operator()(GList* list) const { g_list_free_full(list, g_object_unref); }
};
struct AttributesRelease {
    void operator()(GHashTable* table) const { g_hash_table_unref(table); }
};
template <typename Object>
using ObjectPointer = std::unique_ptr<Object, ObjectRelease>;
using ObjectList = std::unique_ptr<GList, ObjectListRelease>;
using Attributes = std::unique_ptr<GHashTable, AttributesRelease>;

/// One call on its way: what the waiting caller and the working thread share.
class Operation {
public:
    explicit Operation(SecretServiceLimits limits)
        : m_limits(limits)
        , m_cancellable(g_cancellable_new())
        , m_deadline(Clock::now() + limits.answer)
    {
    }

    GCancellable* cancellable() const { return m_cancellable.get(); }

    /// From here on, with a session open, programs answer to programs.
    void expectAnswer() { extend(m_limits.answer); }
    /// From here on the user may be asked something.
    void expectQuestion() { extend(m_limits.question); }

    void finish(SecretReading result)
    {
        const std::lock_guard lock(m_mutex);
        m_result = std::move(result);
        m_isFinished = true;
        m_changed.notify_all();
    }

    SecretReading wait()
    {
        std::unique_lock lock(m_mutex);
        while (!m_isFinished) {
            if (Clock::now() >= m_deadline) {
                const bool hasAnswered = m_hasAnswered;
                lock.unlock();
                g_cancellable_cancel(m_cancellable.get());
                return {hasAnswered ? SecretStatus::failed : SecretStatus::unavailable, {}};
            }
            m_changed.wait_until(lock, m_deadline);
        }
        return std::move(m_result);
    }

private:
    void extend(std::chrono::milliseconds limit)
    {
        const std::lock_guard lock(m_mutex);
        m_hasAnswered = true;
        m_deadline = Clock::now() + limit;
        m_changed.notify_all();
    }

    const SecretServiceLimits m_limits;
    const ObjectPointer<GCancellable> m_cancellable;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    Clock::time_point m_deadline;
    bool m_hasAnswered = false;
    bool m_isFinished = false;
    SecretReading m_result;
};

using Work = std::function<SecretReading(Operation&, ::SecretService*)>;

/// Opens a session with the service and does the work in it.
SecretReading performed(Operation& operation, const Work& work)
{
    const ObjectPointer<GDBusConnection> bus(
        g_bus_get_sync(G_BUS_TYPE_SESSION, operation.cancellable(), nullptr));
    if (!bus || g_dbus_connection_is_closed(bus.get()) != FALSE)
        return {SecretStatus::unavailable, {}};
    // By default GLib ends the process when the session bus goes away.
    g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    const ObjectPointer<::SecretService> service(secret_service_open_sync(
        SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_OPEN_SESSION, operation.cancellable(), nullptr));
    if (!service)
        return {SecretStatus::unavailable, {}};
    operation.expectAnswer();
    return work(operation, service.get());
}

SecretReading performedWithin(SecretServiceLimits limits, Work work)
{
    const auto operation = std::make_shared<Operation>(limits);
    try {
        std::thread([operation, work = std::move(work)] {
            operation->finish(performed(*operation, work));
        }).detach();
    } catch (const std::system_error&) {
        return {SecretStatus::failed, {}};
    }
    return operation->wait();
}

/// Items are found by their attributes alone, whichever program stored them.
const SecretSchema* schema()
{
    static const SecretSchema* const schema =
        secret_schema_new("org.freedesktop.Secret.Generic", SECRET_SCHEMA_DONT_MATCH_NAME, "service",
                          SECRET_SCHEMA_ATTRIBUTE_STRING, "account", SECRET_SCHEMA_ATTRIBUTE_STRING, nullptr);
    return schema;
}

Attributes attributes(const QString& service, const QString& account)
{
    return Attributes(secret_attributes_build(schema(), "service", service.toUtf8().constData(), "account",
                                              account.toUtf8().constData(), nullptr));
}

struct Search {
    bool succeeded = false;
    ObjectList items;
};

Search search(Operation& operation, ::SecretService* service, GHashTable* names, SecretSearchFlags flags)
{
    GError* error = nullptr;
    GList* items =
        secret_service_search_sync(service, schema(), names, flags, operation.cancellable(), &error);
    const bool succeeded = error == nullptr;
    g_clear_error(&error);
    return {succeeded, ObjectList(items)};
}

SecretItem* itemOf(GList* element)
{
    return SECRET_ITEM(element->data);
}

/// Unlocks an item, which may mean that the desktop asks the user. Answers whether it is open now.
bool unlocked(Operation& operation, ::SecretService* service, SecretItem* item)
{
    if (secret_item_get_locked(item) == FALSE)
        return true;
    operation.expectQuestion();
    GList single{item, nullptr, nullptr};
    const int count = secret_service_unlock_sync(service, &single, operation.cancellable(), nullptr, nullptr);
    operation.expectAnswer();
    return count == 1;
}

SecretReading readItem(Operation& operation, ::SecretService* service, GHashTable* names)
{
    const Search found = search(operation, service, names, SECRET_SEARCH_NONE);
    if (!found.succeeded)
        return {SecretStatus::failed, {}};
    if (!found.items)
        return {SecretStatus::notFound, {}};
    SecretItem* item = itemOf(found.items.get());
    if (!unlocked(operation, service, item)
        || secret_item_load_secret_sync(item, operation.cancellable(), nullptr) == FALSE)
        return {SecretStatus::failed, {}};
    SecretValue* value = secret_item_get_secret(item);
    if (value == nullptr)
        return {SecretStatus::failed, {}};
    gsize size = 0;
    const gchar* data = secret_value_get(value, &size);
    SecretReading reading{SecretStatus::success, QByteArray(data, static_cast<qsizetype>(size))};
    secret_value_unref(value);
    return reading;
}

SecretStatus removeItems(Operation& operation, ::SecretService* service, GHashTable* names)
{
    const Search found = search(operation, service, names, SECRET_SEARCH_ALL);
    if (!found.succeeded)
        return SecretStatus::failed;
    if (!found.items)
        return SecretStatus::notFound;
    SecretStatus status = SecretStatus::success;
    for (GList* element = found.items.get(); element != nullptr; element = element->next) {
        SecretItem* item = itemOf(element);
        if (!unlocked(operation, service, item)
            || secret_item_delete_sync(item, operation.cancellable(), nullptr) == FALSE)
            status = SecretStatus::failed;
    }
    return status;
}

SecretStatus addItem(Operation& operation, ::SecretService* service, GHashTable* names,
                     const QByteArray& label, const QByteArray& secret)
{
    SecretValue* value =
        secret_value_new(secret.constData(), static_cast<gssize>(secret.size()), "text/plain");
    // A locked collection is unlocked, and a missing one created, on the way.
    operation.expectQuestion();
    const gboolean isStored =
        secret_service_store_sync(service, schema(), names, SECRET_COLLECTION_DEFAULT, label.constData(),
                                  value, operation.cancellable(), nullptr);
    secret_value_unref(value);
    return isStored == FALSE ? SecretStatus::failed : SecretStatus::success;
}

/// The storage itself, see @c orvia::SecretService.
class CredentialLibrary final : public SecretStorage {
public:
    CredentialLibrary(QByteArray label, SecretServiceLimits limits)
        : m_label(std::move(label))
        , m_limits(limits)
    {
    }

    SecretReading read(const QString& service, const QString& account) override
    {
        return performedWithin(m_limits, [service, account](Operation& operation, ::SecretService* secrets) {
            return readItem(operation, secrets, attributes(service, account).get());
        });
    }

    SecretStatus add(const QByteArray& secret, const QString& service, const QString& account) override
    {
        const auto work = [secret, service, account,
                           label = m_label](Operation& operation, ::SecretService* secrets) -> SecretReading {
            return {addItem(operation, secrets, attributes(service, account).get(), label, secret), {}};
        };
        return performedWithin(m_limits, work).status;
    }

    SecretStatus remove(const QString& service, const QString& account) override
    {
        const auto work = [service, account](Operation& operation,
                                             ::SecretService* secrets) -> SecretReading {
            return {removeItems(operation, secrets, attributes(service, account).get()), {}};
        };
        return performedWithin(m_limits, work).status;
    }

private:
    QByteArray m_label;
    SecretServiceLimits m_limits;
};

} // namespace
} // namespace orvia

orvia::SecretStorage* orviaSecretService(const QString& label, orvia::SecretServiceLimits limits)
{
    return new orvia::CredentialLibrary(label.toUtf8(), limits);
}
