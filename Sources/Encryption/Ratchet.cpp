// SPDX-License-Identifier: MIT
#include "Encryption/Ratchet.h"

#include <algorithm>

namespace orvane::ratchet {

void advance(RS &state) {
    X25519PrivateKey fresh = X25519PrivateKey::generate();
    const SecretBytes agreed = state.peerEph ? fresh.agree(*state.peerEph) : SecretBytes(primitives::keySize);
    SecretBytes material(state.rootKey.size() + agreed.size());
    std::copy_n(state.rootKey.data(), state.rootKey.size(), material.data());
    std::copy_n(agreed.data(), agreed.size(), material.data() + state.rootKey.size());
    const SecretBytes derived = primitives::hkdfSha256(material.view(), {}, {}, 2 * primitives::keySize);
    state.rootKey = SecretBytes(derived.view().first(primitives::keySize));
    state.sendCK = SecretBytes(derived.view().last(primitives::keySize));
    state.ourEph = std::move(fresh);
    state.msgNum = 0;
}

ChainStep derive(const SecretBytes &chainKey) {
    static constexpr char zeros[primitives::keySize] = {};
    const QByteArrayView key(zeros, primitives::keySize);
    return {primitives::hmacSha256(key, {chainKey.view(), QByteArrayView("\x01", 1)}),
            primitives::hmacSha256(key, {chainKey.view(), QByteArrayView("\x02", 1)})};
}

} // namespace orvane::ratchet
