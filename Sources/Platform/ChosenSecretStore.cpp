// SPDX-License-Identifier: MIT
#include "Platform/ChosenSecretStore.h"

#include "Base/LogLine.h"
#include "Platform/FileSecretStore.h"
#include "Platform/Folders.h"
#include "Platform/SecretServiceStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

// In the order of the choices.
constexpr const char *markers[] = {"", "keyring", "file", "both"};

bool isAway(qint32 status) {
    return status == SecretStatus::notAvailable || status == SecretStatus::unanswered;
}

// What a keyring keeps back for now is not missing, lest somebody puts another in its place.
bool fileDecides(qint32 keyring, qint32 file) {
    return keyring == SecretStatus::itemNotFound || keyring == SecretStatus::notAvailable ||
           (keyring != SecretStatus::success && file == SecretStatus::success);
}

} // namespace

ChosenSecretStore::ChosenSecretStore(std::unique_ptr<SecretStore> keyring, std::unique_ptr<SecretStore> file,
                                     const QString &folder)
    : m_keyring(std::move(keyring))
    , m_file(std::move(file))
    , m_marker(folder + u"/secret-store"_s) {
    connect(m_keyring.get(), &SecretStore::opened, this, &SecretStore::opened);
    QFile marker(m_marker);
    if (!marker.open(QIODevice::ReadOnly))
        return;
    const QByteArray name = marker.readAll().trimmed();
    for (const Choice choice : {Choice::keyring, Choice::file, Choice::both}) {
        if (name == markers[int(choice)])
            m_choice = choice;
    }
}

std::unique_ptr<SecretStore> ChosenSecretStore::forThisDesktop() {
    const QString folder = folders::data();
    return std::make_unique<ChosenSecretStore>(std::make_unique<SecretServiceStore>(),
                                               std::make_unique<FileSecretStore>(folder + u"/secrets.json"_s),
                                               folder);
}

qint32 ChosenSecretStore::add(const QString &service, const QString &account, const QString &label,
                              const QByteArray &data) {
    const QMutexLocker lock(&m_calls);
    if (m_choice == Choice::file)
        return m_file->add(service, account, label, data);
    const qint32 status = m_keyring->add(service, account, label, data);
    if (status == SecretStatus::success && m_choice == Choice::none)
        remember(Choice::keyring);
    if (!isAway(status) || m_choice == Choice::keyring)
        return status;
    const qint32 written = m_file->add(service, account, label, data);
    if (written == SecretStatus::success && m_choice == Choice::none)
        remember(status == SecretStatus::notAvailable ? Choice::file : Choice::both);
    return written;
}

SecretStore::Match ChosenSecretStore::copyMatching(const QString &service, const QString &account) {
    const QMutexLocker lock(&m_calls);
    if (m_choice == Choice::file)
        return m_file->copyMatching(service, account);
    Match match = m_keyring->copyMatching(service, account);
    if (match.status == SecretStatus::success || m_choice == Choice::keyring)
        return match;
    Match kept = m_file->copyMatching(service, account);
    return fileDecides(match.status, kept.status) ? kept : match;
}

qint32 ChosenSecretStore::remove(const QString &service, const QString &account) {
    const QMutexLocker lock(&m_calls);
    if (m_choice == Choice::file)
        return m_file->remove(service, account);
    const qint32 status = m_keyring->remove(service, account);
    if (m_choice == Choice::keyring)
        return status;
    const qint32 removed = m_file->remove(service, account);
    return fileDecides(status, removed) ? removed : status;
}

void ChosenSecretStore::allowFile() {
    const QMutexLocker lock(&m_calls);
    if (m_choice != Choice::file && m_choice != Choice::both)
        remember(Choice::both);
}

void ChosenSecretStore::remember(Choice choice) {
    m_choice = choice;
    if (choice != Choice::keyring)
        logLine(u"[SecretStore] No keyring answers: credentials are kept in a file of this user"_s);
    QDir().mkpath(QFileInfo(m_marker).path());
    QSaveFile marker(m_marker);
    const QByteArray name = markers[int(choice)] + QByteArray("\n");
    if (!marker.open(QIODevice::WriteOnly) || marker.write(name) != name.size() || !marker.commit())
        logLine(u"[SecretStore] The choice of the store could not be written down"_s);
}

} // namespace orvane
