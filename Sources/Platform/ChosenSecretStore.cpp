#include "Platform/ChosenSecretStore.h"

#include "Base/LogLine.h"
#include "Platform/FileSecretStore.h"
#include "Platform/Folders.h"
#include "Platform/SecretServiceStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace orvane {

ChosenSecretStore::ChosenSecretStore(std::unique_ptr<SecretStore> keyring, std::unique_ptr<SecretStore> file,
                                     const QString &folder)
    : m_keyring(std::move(keyring))
    , m_file(std::move(file))
    , m_marker(folder + QStringLiteral("/secret-store")) {
    QFile marker(m_marker);
    if (!marker.open(QIODevice::ReadOnly))
        return;
    const QByteArray name = marker.readAll().trimmed();
    m_remembered = name == "keyring" || name == "file";
    m_choice = name == "file" ? Choice::file : Choice::keyring;
}

std::unique_ptr<SecretStore> ChosenSecretStore::forThisDesktop() {
    const QString folder = folders::data();
    return std::make_unique<ChosenSecretStore>(
        std::make_unique<SecretServiceStore>(),
        std::make_unique<FileSecretStore>(folder + QStringLiteral("/secrets.json")), folder);
}

qint32 ChosenSecretStore::add(const QString &service, const QString &account, const QString &label,
                              const QByteArray &data) {
    const QMutexLocker lock(&m_calls);
    qint32 status = current().add(service, account, label, data);
    if (fallBack(status))
        status = current().add(service, account, label, data);
    if (status == SecretStatus::success)
        remember();
    return status;
}

SecretStore::Match ChosenSecretStore::copyMatching(const QString &service, const QString &account) {
    const QMutexLocker lock(&m_calls);
    Match match = current().copyMatching(service, account);
    if (fallBack(match.status))
        match = current().copyMatching(service, account);
    return match;
}

qint32 ChosenSecretStore::remove(const QString &service, const QString &account) {
    const QMutexLocker lock(&m_calls);
    const qint32 status = current().remove(service, account);
    return fallBack(status) ? current().remove(service, account) : status;
}

bool ChosenSecretStore::fallBack(qint32 status) {
    if (m_remembered || m_choice == Choice::file || status != SecretStatus::notAvailable)
        return false;
    logLine(QStringLiteral("[SecretStore] No keyring answers: credentials are kept in a file of this user"));
    m_choice = Choice::file;
    return true;
}

void ChosenSecretStore::remember() {
    if (m_remembered)
        return;
    m_remembered = true;
    QDir().mkpath(QFileInfo(m_marker).path());
    QSaveFile marker(m_marker);
    if (!marker.open(QIODevice::WriteOnly) ||
        marker.write(m_choice == Choice::file ? "file\n" : "keyring\n") < 0 || !marker.commit())
        logLine(QStringLiteral("[SecretStore] The choice of the store could not be written down"));
}

SecretStore &ChosenSecretStore::current() {
    return m_choice == Choice::file ? *m_file : *m_keyring;
}

} // namespace orvane
