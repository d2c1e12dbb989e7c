// SPDX-License-Identifier: MIT
#include "HomeServer/Store/FolderLock.h"

#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <stdexcept>
#include <sys/file.h>
#include <unistd.h>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

FolderLock::FolderLock(const QString &folder) {
    const QFile::Permissions owner = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    if (!QDir().mkpath(folder) || !QFile::setPermissions(folder, owner))
        throw std::runtime_error("the data folder " + folder.toStdString() + " can't be made");
    const QByteArray path = QFile::encodeName(QDir(folder).filePath(u"lock"_s));
    m_descriptor = ::open(path.constData(), O_CREAT | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (m_descriptor < 0)
        throw std::runtime_error("the data folder " + folder.toStdString() + " can't be written");
    if (::flock(m_descriptor, LOCK_EX | LOCK_NB) != 0) {
        ::close(m_descriptor);
        throw std::runtime_error("another server works in " + folder.toStdString());
    }
}

FolderLock::~FolderLock() {
    ::close(m_descriptor);
}

} // namespace orvane::homeserver
