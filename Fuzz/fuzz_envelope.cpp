// SPDX-License-Identifier: MIT
#include "Encryption/EncryptedMessage.h"
#include "Invariant.h"

#include <QByteArray>

// Whatever is taken for an envelope writes itself in a form that reads back the same.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    using namespace orvane;
    const QByteArray input(reinterpret_cast<const char *>(bytes), qsizetype(size));
    // Mostly the JSON inside, so that the base64 around it need not be guessed.
    for (const QString &content : {QString::fromUtf8(input), QString::fromLatin1(input.toBase64())}) {
        if (const auto message = EncryptedMessage::fromContent(content))
            invariant(EncryptedMessage::fromContent(message->toContent()) == message,
                      "an envelope written again is the same envelope");
    }
    return 0;
}
