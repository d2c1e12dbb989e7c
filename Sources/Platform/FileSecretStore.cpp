// SPDX-License-Identifier: MIT
#include "Platform/FileSecretStore.h"

#include "Base/Json.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr QFile::Permissions ownerOnly = QFile::ReadOwner | QFile::WriteOwner;

QString keyOf(const QString &service, const QString &account) {
    return service + u'/' + account;
}

} // namespace

FileSecretStore::FileSecretStore(const QString &path)
    : m_path(path) {}

qint32 FileSecretStore::add(const QString &service, const QString &account, const QString &label,
                            const QByteArray &data) {
    std::optional<QJsonObject> items = read();
    if (!items) {
        // A file that can't even be opened may be whole.
        if (QFileInfo(m_path).isFile() && !QFile(m_path).open(QIODevice::ReadOnly))
            return SecretStatus::notWritten;
        QFile::remove(m_path + u".damaged"_s);
        if (!QFile::rename(m_path, m_path + u".damaged"_s))
            return SecretStatus::notWritten;
        items.emplace();
    }
    items->insert(keyOf(service, account),
                  QJsonObject{{u"label"_s, label}, {u"data"_s, QString::fromLatin1(data.toBase64())}});
    return write(*items);
}

SecretStore::Match FileSecretStore::copyMatching(const QString &service, const QString &account) {
    const auto items = read();
    if (!items)
        return {SecretStatus::damaged, {}};
    const auto item = json::object(*items, keyOf(service, account));
    if (!item)
        return {SecretStatus::itemNotFound, {}};
    const auto text = json::text(*item, u"data");
    if (!text)
        return {SecretStatus::damaged, {}};
    const auto data =
        QByteArray::fromBase64Encoding(text->toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    return data ? Match{SecretStatus::success, *data} : Match{SecretStatus::damaged, {}};
}

qint32 FileSecretStore::remove(const QString &service, const QString &account) {
    auto items = read();
    if (!items)
        return SecretStatus::damaged;
    const QString key = keyOf(service, account);
    if (!items->contains(key))
        return SecretStatus::itemNotFound;
    items->remove(key);
    return write(*items);
}

std::optional<QJsonObject> FileSecretStore::read() const {
    QFile file(m_path);
    if (!file.exists())
        return QJsonObject();
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return json::readObject(file.readAll());
}

qint32 FileSecretStore::write(const QJsonObject &items) const {
    if (!QDir().mkpath(QFileInfo(m_path).path()))
        return SecretStatus::notWritten;
    QSaveFile file(m_path);
    const QByteArray bytes = json::compact(items);
    if (!file.open(QIODevice::WriteOnly) || !file.setPermissions(ownerOnly) ||
        file.write(bytes) != bytes.size() || !file.commit())
        return SecretStatus::notWritten;
    return SecretStatus::success;
}

} // namespace orvane
