// SPDX-License-Identifier: MIT
#include "Encryption/EncryptionErrors.h"

using namespace Qt::StringLiterals;

namespace orvane {

// These texts are for developers: no screen shows them.
CryptoError::CryptoError(Case which)
    : DescribedError(u"CryptoError %1"_s.arg(int(which)))
    , m_case(which) {}

ZkCryptoError::ZkCryptoError(Case which, qint32 status)
    : DescribedError(u"ZkCryptoError %1 %2"_s.arg(QString::number(int(which)), QString::number(status)))
    , m_case(which)
    , m_status(status) {}

} // namespace orvane
