// SPDX-License-Identifier: MIT
#include "Base/Json.h"
#include "Encryption/ZkForms.h"
#include "Invariant.h"

// Nobody makes a payload by chance, and every text comes back as it went in.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    using namespace orvane;
    static const SecretBytes key = primitives::randomKey();
    const QByteArray input(reinterpret_cast<const char *>(bytes), qsizetype(size));
    const QString text = QString::fromUtf8(input);
    invariant(zk::decrypt(zk::encrypt(text, key), key) == text, "a text comes back as it went in");
    try {
        const auto payload = json::parseObject(input);
        if (!payload)
            return 0;
        zk::decrypt(*payload, key);
        invariant(false, "nothing that was not sealed opens");
    } catch (const DescribedError &) {
        return 0;
    }
    return 0;
}
