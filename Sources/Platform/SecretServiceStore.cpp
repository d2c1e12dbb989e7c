#include "Platform/SecretServiceStore.h"

#include <libsecret/secret.h>

#include <memory>

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

struct FreeError {
    void operator()(GError *error) const { g_error_free(error); }
};
using Error = std::unique_ptr<GError, FreeError>;

struct UnrefValue {
    void operator()(SecretValue *value) const { secret_value_unref(value); }
};
using Value = std::unique_ptr<SecretValue, UnrefValue>;

// The bus says in several ways that there is nobody to ask.
qint32 statusOf(const GError &error) {
    const bool nobody =
        error.domain == g_io_error_quark() || error.domain == g_spawn_error_quark() ||
        (error.domain == g_dbus_error_quark() &&
         (error.code == G_DBUS_ERROR_SERVICE_UNKNOWN || error.code == G_DBUS_ERROR_NAME_HAS_NO_OWNER ||
          error.code == G_DBUS_ERROR_NO_SERVER || error.code == G_DBUS_ERROR_SPAWN_SERVICE_NOT_FOUND ||
          error.code == G_DBUS_ERROR_SPAWN_EXEC_FAILED || error.code == G_DBUS_ERROR_SPAWN_CHILD_EXITED ||
          error.code == G_DBUS_ERROR_DISCONNECTED || error.code == G_DBUS_ERROR_NO_REPLY)) ||
        g_error_matches(&error, secret_error_get_quark(), SECRET_ERROR_IS_LOCKED) ||
        g_error_matches(&error, secret_error_get_quark(), SECRET_ERROR_PROTOCOL);
    if (nobody || error.code == SecretStatus::success)
        return SecretStatus::notAvailable;
    return error.code;
}

struct UnrefObject {
    void operator()(gpointer object) const { g_object_unref(object); }
};

// Storing into a keyring that is locked or yet to be made opens a dialog and waits for it without end.
qint32 readyToStore() {
    GError *raw = nullptr;
    const std::unique_ptr<SecretService, UnrefObject> service(
        secret_service_get_sync(SECRET_SERVICE_NONE, nullptr, &raw));
    if (const Error error(raw); error)
        return statusOf(*error);
    const std::unique_ptr<SecretCollection, UnrefObject> keyring(secret_collection_for_alias_sync(
        service.get(), SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, nullptr, &raw));
    if (const Error error(raw); error)
        return statusOf(*error);
    return keyring && secret_collection_get_locked(keyring.get()) == 0 ? SecretStatus::success
                                                                       : SecretStatus::notAvailable;
}

} // namespace

qint32 SecretServiceStore::add(const QString &service, const QString &account, const QString &label,
                               const QByteArray &data) {
    if (const qint32 status = readyToStore(); status != SecretStatus::success)
        return status;
    const Value value(secret_value_new(data.constData(), data.size(), "application/octet-stream"));
    GError *raw = nullptr;
    secret_password_store_binary_sync(&schema(), SECRET_COLLECTION_DEFAULT, label.toUtf8().constData(),
                                      value.get(), nullptr, &raw, "service", service.toUtf8().constData(),
                                      "account", account.toUtf8().constData(), nullptr);
    const Error error(raw);
    return error ? statusOf(*error) : SecretStatus::success;
}

SecretStore::Match SecretServiceStore::copyMatching(const QString &service, const QString &account) {
    GError *raw = nullptr;
    const Value value(secret_password_lookup_binary_sync(&schema(), nullptr, &raw, "service",
                                                         service.toUtf8().constData(), "account",
                                                         account.toUtf8().constData(), nullptr));
    const Error error(raw);
    if (error)
        return {statusOf(*error), {}};
    if (!value)
        return {SecretStatus::itemNotFound, {}};
    gsize size = 0;
    const gchar *bytes = secret_value_get(value.get(), &size);
    return {SecretStatus::success, QByteArray(bytes, qsizetype(size))};
}

qint32 SecretServiceStore::remove(const QString &service, const QString &account) {
    GError *raw = nullptr;
    const bool removed =
        secret_password_clear_sync(&schema(), nullptr, &raw, "service", service.toUtf8().constData(),
                                   "account", account.toUtf8().constData(), nullptr) != 0;
    const Error error(raw);
    if (error)
        return statusOf(*error);
    return removed ? SecretStatus::success : SecretStatus::itemNotFound;
}

} // namespace orvane
