// SPDX-License-Identifier: MIT
#include "Base/Json.h"
#include "Encryption/ZkForms.h"
#include "Invariant.h"

using namespace Qt::StringLiterals;

// Nobody makes a wrapped key by chance: only what was wrapped may open.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    using namespace orvane;
    static const P256PrivateKey own = P256PrivateKey::generate();
    static const QJsonObject genuine = zk::wrap(primitives::randomKey(), own.publicKey());
    try {
        const auto wrapped =
            json::parseObject(QByteArray(reinterpret_cast<const char *>(bytes), qsizetype(size)));
        if (!wrapped)
            return 0;
        QJsonObject mixed = *wrapped;
        // With a real key beside it, what follows the key is reached as well.
        if (mixed.value(u"ephemeral_public_jwk"_s).isBool())
            mixed.insert(u"ephemeral_public_jwk"_s, genuine.value(u"ephemeral_public_jwk"_s));
        zk::unwrap(mixed, own);
        invariant(false, "nothing that was not sealed opens");
    } catch (const DescribedError &) {
        return 0;
    }
    return 0;
}
