// SPDX-License-Identifier: MIT
#include "Invariant.h"
#include "Model/ChatFolder.h"
#include "Model/PreKeyBundle.h"

#include <cstdint>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

QString base64(const QByteArray &bytes) {
    return QString::fromLatin1(bytes.toBase64());
}

void checkBundle(const QJsonObject &object) {
    const auto bundle = PreKeyBundle::from(object);
    if (!bundle)
        return;
    QJsonObject again{{u"identity_key"_s, base64(bundle->identityKey)},
                      {u"signed_pre_key"_s, base64(bundle->signedPreKey)},
                      {u"signed_pre_key_signature"_s, base64(bundle->signedPreKeySignature)}};
    if (bundle->oneTimePreKey)
        again.insert(u"one_time_pre_key"_s, base64(*bundle->oneTimePreKey));
    invariant(PreKeyBundle::from(again) == bundle, "a bundle written again is the same bundle");
    const qsizetype textSize = object.value("identity_key"_L1).toString().size();
    invariant(base64(bundle->identityKey).size() == textSize, "no character of a key is skipped");
}

void checkFolder(const QJsonObject &object) {
    const auto folder = ChatFolder::fromAPI(object);
    invariant(folder.has_value() == object.value("id"_L1).isString(), "a text id makes a folder");
    if (!folder)
        return;
    const qsizetype listed = object.value("chat_ids"_L1).toArray().size();
    invariant(folder->chatIds.isEmpty() || folder->chatIds.size() == listed, "chats are taken all or none");
    survivesStoring(*folder);
}

} // namespace

/// An object of the server, read as a key bundle and as a folder.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QJsonObject object =
        parsed(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size))).toObject();
    checkBundle(object);
    checkFolder(object);
    return 0;
}
