// SPDX-License-Identifier: MIT
#pragma once

#include "Encryption/AgreementKeys.h"

#include <QString>

#include <optional>

namespace orvane {

/// The state of the ratchet of one chat.
///
///     handshake: rootKey of 96 bytes, nothing else
///        | advance
///        v
///     rootKey and sendCK of 32 bytes --(encrypt)--> next sendCK, msgNum + 1
///        |                          <--(advance)--  new rootKey and sendCK, msgNum 0
///        v (decrypt)
///     receiveCK: from sendCK at the first time, then its own next one
struct RS {
    QString chatID;
    SecretBytes rootKey;
    std::optional<SecretBytes> sendCK;
    std::optional<SecretBytes> receiveCK;
    std::optional<X25519PrivateKey> ourEph;
    /// Absent in every state that is kept.
    std::optional<QByteArray> peerEph;
    qint64 msgNum = 0;
};

namespace ratchet {

/// The root step: a new root and sending chain, from the old root and the agreement with `peerEph`, or 32
/// zero bytes without one (HKDF-SHA-256, no salt, no info). Throws CipherError and then changes nothing.
void advance(RS &state);

struct ChainStep {
    SecretBytes messageKey;
    SecretBytes nextKey;
};

/// The chain step. HMAC-SHA-256 keyed with 32 zero bytes over the chain key and one byte, 1 for the message
/// key and 2 for the next chain key: which of the two is key and which is data is part of the wire's
/// agreement.
ChainStep derive(const SecretBytes &chainKey);

} // namespace ratchet
} // namespace orvane
