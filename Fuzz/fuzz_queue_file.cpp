// SPDX-License-Identifier: MIT
#include "Invariant.h"
#include "OfflineQueue/QueueForm.h"

// A file is taken apart without a byte lost, whatever is sealed opens again, and a list that was written
// comes back as it was.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    using namespace orvane;
    static const SecretBytes key = primitives::randomKey();
    const QByteArray input(reinterpret_cast<const char *>(bytes), qsizetype(size));
    try {
        const primitives::Box box = queueform::boxOf(input);
        invariant(queueform::fileMagic.toByteArray() + box.nonce + box.ciphertext + box.tag == input,
                  "a file is its parts");
        primitives::open(key.view(), box);
        invariant(false, "nothing that was not sealed opens");
    } catch (const DescribedError &) {
        // On purpose: most bytes are no file.
    }
    const SecretBytes plain = primitives::open(key.view(), queueform::boxOf(queueform::seal(input, key)));
    invariant(plain.view().toByteArray() == input, "what was sealed opens");
    try {
        // Half a character is written as a whole one that stands for it.
        const QList<QueuedMessage> messages = queueform::decode(queueform::encode(queueform::decode(input)));
        invariant(queueform::decode(queueform::encode(messages)) == messages, "a list comes back as it was");
    } catch (const JsonError &) {
        // On purpose: most bytes are no list.
    }
    return 0;
}
