#include "Platform/Folders.h"

#include <QStandardPaths>

namespace orvane::folders {

QString data() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/OrvaneTalk");
}

} // namespace orvane::folders
