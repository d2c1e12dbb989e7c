#include "Invariant.h"
#include "Model/ChatFolder.h"
#include "Model/PreKeyBundle.h"

#include <cstdint>

using namespace orvane;

namespace {

QString base64(const QByteArray &bytes) {
    return QString::fromLatin1(bytes.toBase64());
}

void checkBundle(const QJsonObject &object) {
    const auto bundle = PreKeyBundle::from(object);
    if (!bundle)
        return;
    QJsonObject again{{QStringLiteral("identity_key"), base64(bundle->identityKey)},
                      {QStringLiteral("signed_pre_key"), base64(bundle->signedPreKey)},
                      {QStringLiteral("signed_pre_key_signature"), base64(bundle->signedPreKeySignature)}};
    if (bundle->oneTimePreKey)
        again.insert(QStringLiteral("one_time_pre_key"), base64(*bundle->oneTimePreKey));
    invariant(PreKeyBundle::from(again) == bundle, "a bundle written again is the same bundle");
    const qsizetype textSize = object.value(QLatin1String("identity_key")).toString().size();
    invariant(base64(bundle->identityKey).size() == textSize, "no character of a key is skipped");
}

void checkFolder(const QJsonObject &object) {
    const auto folder = ChatFolder::fromAPI(object);
    invariant(folder.has_value() == object.value(QLatin1String("id")).isString(), "a text id makes a folder");
    if (!folder)
        return;
    const qsizetype listed = object.value(QLatin1String("chat_ids")).toArray().size();
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
