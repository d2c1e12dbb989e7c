// SPDX-License-Identifier: MIT
#include "Base/Json.h"
#include "Encryption/ZkForms.h"
#include "Invariant.h"

// Whatever is taken for a key is exported as the same key.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    using namespace orvane;
    try {
        const auto jwk =
            json::parseObject(QByteArray(reinterpret_cast<const char *>(bytes), qsizetype(size)));
        if (!jwk)
            return 0;
        const P256PublicKey key = zk::importPublicJWK(*jwk);
        invariant(zk::importPublicJWK(zk::exportPublicJWK(key)).x963() == key.x963(),
                  "a key exported is the same key");
    } catch (const DescribedError &) {
        return 0;
    }
    return 0;
}
