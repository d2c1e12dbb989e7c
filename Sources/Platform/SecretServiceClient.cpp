// SPDX-License-Identifier: MIT
#include "Platform/SecretServiceClient.h"

#include <libsecret/secret.h>

namespace orvane {

namespace {

const SecretSchema &schema() {
    static const SecretSchema value{
        "com.orvanetalk.OrvaneTalk",
        SECRET_SCHEMA_NONE,
        {{"service", SECRET_SCHEMA_ATTRIBUTE_STRING}, {"account", SECRET_SCHEMA_ATTRIBUTE_STRING}},
        0,
        nullptr,
        nullptr,
        nullptr,
        nullptr,
        nullptr,
        nullptr,
        nullptr};
    return value;
}

template <auto function>
struct Free {
    void operator()(auto *held) const { function(held); }
};
template <typename T, auto function>
using Held = std::unique_ptr<T, Free<function>>;

using Error = Held<GError, g_error_free>;
using Value = Held<SecretValue, secret_value_unref>;
using Attributes = Held<GHashTable, g_hash_table_unref>;

bool isTimeout(const Error &error) {
    return g_error_matches(error.get(), g_io_error_quark(), G_IO_ERROR_TIMED_OUT) != 0;
}

// The bus says in several ways that there is nobody to ask.
qint32 statusOf(const GError &error) {
    if (g_error_matches(&error, g_io_error_quark(), G_IO_ERROR_TIMED_OUT) ||
        g_error_matches(&error, secret_error_get_quark(), SECRET_ERROR_IS_LOCKED))
        return SecretStatus::unanswered;
    const bool nobody =
        error.domain == g_io_error_quark() || error.domain == g_spawn_error_quark() ||
        (error.domain == g_dbus_error_quark() &&
         (error.code == G_DBUS_ERROR_SERVICE_UNKNOWN || error.code == G_DBUS_ERROR_NAME_HAS_NO_OWNER ||
          error.code == G_DBUS_ERROR_NO_SERVER || error.code == G_DBUS_ERROR_SPAWN_SERVICE_NOT_FOUND ||
          error.code == G_DBUS_ERROR_SPAWN_EXEC_FAILED || error.code == G_DBUS_ERROR_SPAWN_CHILD_EXITED ||
          error.code == G_DBUS_ERROR_DISCONNECTED || error.code == G_DBUS_ERROR_NO_REPLY)) ||
        g_error_matches(&error, secret_error_get_quark(), SECRET_ERROR_PROTOCOL);
    if (nobody || error.code == SecretStatus::success)
        return SecretStatus::notAvailable;
    return error.code;
}

Attributes attributesOf(const QString &service, const QString &account) {
    return Attributes(secret_attributes_build(&schema(), "service", service.toUtf8().constData(), "account",
                                              account.toUtf8().constData(), nullptr));
}

} // namespace

struct SecretServiceClient::Connection {
    Held<GMainContext, g_main_context_unref> events{g_main_context_new()};
    Held<GCancellable, g_object_unref> cancelled{g_cancellable_new()};
    Held<SecretService, g_object_unref> secrets;
    Error error;

    Connection() = default;
    ~Connection() {
        // What watched the service is let go of by an event.
        secrets.reset();
        handleEvents();
    }
    Q_DISABLE_COPY_MOVE(Connection)

    /// What `ask` returns for the service and a place for the error, which is kept. A service that was known
    /// from before may have gone and come again: then it is asked anew.
    template <typename Ask>
    auto call(Ask ask) {
        // What the service announces is heard in between calls, on whichever thread they are made.
        g_main_context_push_thread_default(events.get());
        handleEvents();
        const bool known = secrets != nullptr;
        auto answer = attempt(ask);
        if (error && known && statusOf(*error) != SecretStatus::unanswered)
            answer = attempt(ask);
        g_main_context_pop_thread_default(events.get());
        return answer;
    }

    qint32 status() const { return error ? statusOf(*error) : SecretStatus::success; }

    /// For an item that was not found: the service gives none away that is locked.
    qint32 absence(GHashTable *attributes) {
        GList *items = call([this, attributes](SecretService *service, GError **raw) {
            return secret_service_search_sync(service, &schema(), attributes, SECRET_SEARCH_ALL,
                                              cancelled.get(), raw);
        });
        bool locked = false;
        for (const GList *item = items; item; item = item->next)
            locked = locked || secret_item_get_locked(SECRET_ITEM(item->data)) != 0;
        g_list_free_full(items, g_object_unref);
        if (error)
            return status();
        return locked ? SecretStatus::unanswered : SecretStatus::itemNotFound;
    }

private:
    void handleEvents() {
        while (g_main_context_iteration(events.get(), FALSE)) {
        }
    }

    template <typename Ask>
    auto attempt(Ask ask) -> decltype(ask(nullptr, nullptr)) {
        GError *raw = nullptr;
        if (!secrets)
            open(&raw);
        decltype(ask(nullptr, nullptr)) answer{};
        if (secrets)
            answer = ask(secrets.get(), &raw);
        error.reset(raw);
        if (error)
            secrets.reset();
        return answer;
    }

    void open(GError **raw) {
        secrets.reset(secret_service_open_sync(SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_OPEN_SESSION,
                                               cancelled.get(), raw));
        // A lost bus would end the process.
        if (secrets)
            g_dbus_connection_set_exit_on_close(g_dbus_proxy_get_connection(G_DBUS_PROXY(secrets.get())),
                                                FALSE);
    }
};

SecretServiceClient::SecretServiceClient()
    : m_connection(std::make_unique<Connection>()) {}

SecretServiceClient::~SecretServiceClient() = default;

qint32 SecretServiceClient::add(const QString &service, const QString &account, const QString &label,
                                const QByteArray &data) {
    GCancellable *cancelled = m_connection->cancelled.get();
    // Storing into a keyring that is locked or yet to be made opens a dialog.
    const Held<SecretCollection, g_object_unref> keyring(
        m_connection->call([cancelled](SecretService *secrets, GError **raw) {
            return secret_collection_for_alias_sync(secrets, SECRET_COLLECTION_DEFAULT,
                                                    SECRET_COLLECTION_NONE, cancelled, raw);
        }));
    if (m_connection->error)
        return m_connection->status();
    if (!keyring)
        return SecretStatus::notAvailable;
    if (secret_collection_get_locked(keyring.get()) != 0)
        return SecretStatus::unanswered;
    const Attributes attributes = attributesOf(service, account);
    const Value value(secret_value_new(data.constData(), data.size(), "application/octet-stream"));
    m_connection->call([&](SecretService *secrets, GError **raw) {
        return secret_service_store_sync(secrets, &schema(), attributes.get(), SECRET_COLLECTION_DEFAULT,
                                         label.toUtf8().constData(), value.get(), cancelled, raw);
    });
    return m_connection->status();
}

SecretStore::Match SecretServiceClient::copyMatching(const QString &service, const QString &account) {
    const Attributes attributes = attributesOf(service, account);
    Value value;
    do {
        value.reset(m_connection->call([&](SecretService *secrets, GError **raw) {
            return secret_service_lookup_sync(secrets, &schema(), attributes.get(),
                                              m_connection->cancelled.get(), raw);
        }));
    } while (isTimeout(m_connection->error));
    if (m_connection->error)
        return {m_connection->status(), {}};
    if (!value)
        return {m_connection->absence(attributes.get()), {}};
    gsize size = 0;
    const gchar *bytes = secret_value_get(value.get(), &size);
    return {SecretStatus::success, QByteArray(bytes, qsizetype(size))};
}

qint32 SecretServiceClient::remove(const QString &service, const QString &account) {
    const Attributes attributes = attributesOf(service, account);
    const bool removed = m_connection->call([&](SecretService *secrets, GError **raw) {
        return secret_service_clear_sync(secrets, &schema(), attributes.get(), m_connection->cancelled.get(),
                                         raw) != 0;
    });
    if (m_connection->error || removed)
        return m_connection->status();
    return m_connection->absence(attributes.get());
}

void SecretServiceClient::cancel() {
    g_cancellable_cancel(m_connection->cancelled.get());
}

} // namespace orvane
