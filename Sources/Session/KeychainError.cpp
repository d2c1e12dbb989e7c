#include "Session/KeychainError.h"

namespace orvane {

namespace {

QString describe(KeychainError::Kind kind, qint32 status) {
    switch (kind) {
    case KeychainError::Kind::saveFailed:
        return QStringLiteral("The secret store did not save the item (status %1).").arg(status);
    case KeychainError::Kind::loadFailed:
        return QStringLiteral("The secret store did not give the item (status %1).").arg(status);
    case KeychainError::Kind::deleteFailed:
        break;
    }
    return QStringLiteral("The secret store did not delete the item (status %1).").arg(status);
}

} // namespace

KeychainError::KeychainError(Kind kind, qint32 status)
    : DescribedError(describe(kind, status))
    , m_kind(kind)
    , m_status(status) {}

} // namespace orvane
