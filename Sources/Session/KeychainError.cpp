// SPDX-License-Identifier: MIT
#include "Session/KeychainError.h"

#include "Platform/SecretStore.h"

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QString describe(KeychainError::Kind kind, qint32 status) {
    switch (status) {
    case SecretStatus::notAvailable:
        return u"There is no keyring on this desktop."_s;
    case SecretStatus::unanswered:
        return u"The keyring is locked or does not answer."_s;
    case SecretStatus::damaged:
        return u"The file that sign-ins are kept in can't be read."_s;
    case SecretStatus::notWritten:
        return u"The file that sign-ins are kept in can't be written."_s;
    default:
        break;
    }
    switch (kind) {
    case KeychainError::Kind::saveFailed:
        return u"The secret store did not save the item (status %1)."_s.arg(status);
    case KeychainError::Kind::loadFailed:
        return u"The secret store did not give the item (status %1)."_s.arg(status);
    case KeychainError::Kind::deleteFailed:
        break;
    }
    return u"The secret store did not delete the item (status %1)."_s.arg(status);
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
