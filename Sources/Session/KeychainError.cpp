#include "Session/KeychainError.h"

#include "Platform/SecretStore.h"

namespace orvane {

namespace {

QString describe(KeychainError::Kind kind, qint32 status) {
    switch (status) {
    case SecretStatus::notAvailable:
        return QStringLiteral("There is no keyring on this desktop.");
    case SecretStatus::unanswered:
        return QStringLiteral("The keyring is locked or does not answer.");
    case SecretStatus::damaged:
        return QStringLiteral("The file that sign-ins are kept in can't be read.");
    case SecretStatus::notWritten:
        return QStringLiteral("The file that sign-ins are kept in can't be written.");
    default:
        break;
    }
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

bool KeychainError::isKeyringAway() const {
    return m_status == SecretStatus::notAvailable || m_status == SecretStatus::unanswered;
}

} // namespace orvane
