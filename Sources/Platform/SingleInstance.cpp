// SPDX-License-Identifier: MIT
#include "Platform/SingleInstance.h"

#include "Base/LogLine.h"
#include "Platform/Folders.h"

#include <QCryptographicHash>
#include <QLocalSocket>
#include <QLockFile>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr int patience = 2000;

} // namespace

SingleInstance::SingleInstance(const QString &path)
    : m_path(path) {
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *caller = m_server.nextPendingConnection())
            caller->deleteLater();
        Q_EMIT windowWanted();
    });
}

bool SingleInstance::claim() {
    // Of two that start at once, one asks before the other listens.
    QLockFile turn(m_path + u".lock"_s);
    turn.tryLock(patience);
    QLocalSocket first;
    first.connectToServer(m_path);
    if (first.waitForConnected(patience))
        return false;
    // A client that ended in disorder left its socket behind.
    QLocalServer::removeServer(m_path);
    if (!m_server.listen(m_path))
        logLine(u"[SingleInstance] "_s + m_server.errorString());
    return true;
}

QString SingleInstance::defaultPath() {
    // A socket's path must be short, which that of the data folder need not be.
    const QByteArray folder =
        QCryptographicHash::hash(folders::data().toUtf8(), QCryptographicHash::Sha256).toHex().left(16);
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + u"/orvanetalk-"_s +
           QString::fromLatin1(folder);
}

} // namespace orvane
