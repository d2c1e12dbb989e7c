#include "Encryption/EncryptionErrors.h"

namespace orvane {

// These texts are for developers: no screen shows them.
CryptoError::CryptoError(Case which)
    : DescribedError(QStringLiteral("CryptoError %1").arg(int(which)))
    , m_case(which) {}

ZkCryptoError::ZkCryptoError(Case which, qint32 status)
    : DescribedError(
          QStringLiteral("ZkCryptoError %1 %2").arg(QString::number(int(which)), QString::number(status)))
    , m_case(which)
    , m_status(status) {}

} // namespace orvane
