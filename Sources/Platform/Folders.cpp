// SPDX-License-Identifier: MIT
#include "Platform/Folders.h"

#include <QDir>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace orvane::folders {

QString data() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u"/OrvaneTalk"_s;
}

QString documents() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QDir(folder).exists() ? folder : QDir::homePath();
}

} // namespace orvane::folders
