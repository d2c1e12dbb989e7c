#include "Platform/Folders.h"

#include <QDir>
#include <QStandardPaths>

namespace orvane::folders {

QString data() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/OrvaneTalk");
}

QString documents() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QDir(folder).exists() ? folder : QDir::homePath();
}

} // namespace orvane::folders
