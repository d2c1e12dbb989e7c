// SPDX-License-Identifier: MIT
#include "Support/SecretServiceSession.h"

#include <libsecret/secret.h>

#include <csignal>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

bool hasOwner(GDBusConnection *bus) {
    GVariant *answer = g_dbus_connection_call_sync(
        bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner",
        g_variant_new("(s)", "org.freedesktop.secrets"), G_VARIANT_TYPE("(b)"), G_DBUS_CALL_FLAGS_NONE, 5000,
        nullptr, nullptr);
    if (!answer)
        return false;
    gboolean owned = FALSE;
    g_variant_get(answer, "(b)", &owned);
    g_variant_unref(answer);
    return owned != FALSE;
}

} // namespace

SecretServiceSession::~SecretServiceSession() {
    killDaemon();
}

bool SecretServiceSession::start() {
    if (!m_bus.start())
        return false;
    // A process that loses its session bus ends by default; this one ends its bus itself.
    GDBusConnection *bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    if (!bus)
        return false;
    g_dbus_connection_set_exit_on_close(bus, FALSE);
    g_object_unref(bus);
    return startDaemon();
}

bool SecretServiceSession::startDaemon() {
    m_daemon.setProcessChannelMode(QProcess::MergedChannels);
    m_daemon.start(u"gnome-keyring-daemon"_s,
                   {u"--foreground"_s, u"--unlock"_s, u"--components=secrets"_s,
                    u"--control-directory="_s + qEnvironmentVariable("XDG_RUNTIME_DIR") + u"/keyring"_s});
    if (!m_daemon.waitForStarted(10'000))
        return false;
    m_daemon.write("known password");
    m_daemon.closeWriteChannel();
    GDBusConnection *bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    bool owned = false;
    for (int attempt = 0; attempt < 200 && !owned; ++attempt) {
        m_daemon.waitForFinished(50);
        owned = hasOwner(bus);
    }
    g_object_unref(bus);
    return owned;
}

void SecretServiceSession::killDaemon() {
    if (m_daemon.state() == QProcess::NotRunning)
        return;
    m_daemon.kill();
    m_daemon.waitForFinished();
}

void SecretServiceSession::pauseDaemon() {
    ::kill(pid_t(m_daemon.processId()), SIGSTOP);
}

void SecretServiceSession::resumeDaemon() {
    ::kill(pid_t(m_daemon.processId()), SIGCONT);
}

void SecretServiceSession::lock() {
    // Not the one that this process remembers: its daemon may have gone.
    SecretService *service =
        secret_service_open_sync(SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_NONE, nullptr, nullptr);
    SecretCollection *collection = secret_collection_for_alias_sync(service, SECRET_COLLECTION_DEFAULT,
                                                                    SECRET_COLLECTION_NONE, nullptr, nullptr);
    GList *objects = g_list_append(nullptr, collection);
    secret_service_lock_sync(service, objects, nullptr, nullptr, nullptr);
    g_list_free_full(objects, g_object_unref);
    g_object_unref(service);
}

QString SecretServiceSession::labelOf(const QString &service, const QString &account) const {
    GHashTable *attributes = g_hash_table_new_full(g_str_hash, g_str_equal, g_free, g_free);
    g_hash_table_insert(attributes, g_strdup("service"), g_strdup(service.toUtf8().constData()));
    g_hash_table_insert(attributes, g_strdup("account"), g_strdup(account.toUtf8().constData()));
    GList *items =
        secret_service_search_sync(nullptr, nullptr, attributes, SECRET_SEARCH_NONE, nullptr, nullptr);
    QString result;
    if (items) {
        gchar *label = secret_item_get_label(SECRET_ITEM(items->data));
        result = QString::fromUtf8(label);
        g_free(label);
    }
    g_list_free_full(items, g_object_unref);
    g_hash_table_unref(attributes);
    return result;
}

} // namespace orvane
