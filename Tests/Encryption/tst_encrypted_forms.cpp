// SPDX-License-Identifier: MIT
#include "Base/Json.h"
#include "Encryption/EncryptedFileStorage.h"
#include "Encryption/EncryptedMessage.h"
#include "Encryption/Ratchet.h"
#include "Encryption/ZkForms.h"
#include "Support/TestMain.h"

#include <QDir>
#include <QFile>

using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

// What another implementation wrote; fixtures/generate.py makes it.
QJsonObject wire() {
    QFile file(u"" FIXTURES "/wire.json"_s);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no fixtures");
    return *json::parseObject(file.readAll());
}

QByteArray bytesAt(const QJsonObject &object, const QString &key) {
    return QByteArray::fromHex(json::text(object, key)->toLatin1());
}

QByteArray counting(int size) {
    QByteArray bytes;
    while (bytes.size() < size)
        bytes.append(char(bytes.size()));
    return bytes;
}

QString base64(const QByteArray &bytes) {
    return QString::fromLatin1(bytes.toBase64());
}

QJsonObject envelope() {
    return {{u"ciphertext"_s, base64("hello")},
            {u"nonce"_s, base64(QByteArray(12, 'n'))},
            {u"tag"_s, base64(QByteArray(16, 't'))},
            {u"messageNumber"_s, 3},
            {u"ephemeralKey"_s, base64(QByteArray(32, 'e'))}};
}

QJsonObject with(QJsonObject object, const QString &key, const QJsonValue &value) {
    object.insert(key, value);
    return object;
}

QJsonObject without(QJsonObject object, const QString &key) {
    object.remove(key);
    return object;
}

template <typename F>
QString failureOf(F action) {
    try {
        action();
    } catch (const ZkCryptoError &error) {
        static const QStringList names{u"keychain"_s, u"invalidJWK"_s, u"invalidWrap"_s, u"invalidPayload"_s};
        return names.at(int(error.which()));
    } catch (const CipherError &) {
        return u"cipher"_s;
    }
    return {};
}

} // namespace

class TestEncryptedForms : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void formsOfAnotherImplementationAreRead();
    void theRatchetStepsAsAnotherImplementation();
    void envelopes_data();
    void envelopes();
    void jwks_data();
    void jwks();
    void boxes_data();
    void boxes();
    void textsComeBack();
    void storedBlobs();
};

void TestEncryptedForms::formsOfAnotherImplementationAreRead() {
    const QJsonObject all = wire();
    const QString text = *json::text(all, u"text");
    const auto message = EncryptedMessage::fromContent(*json::text(all, u"envelope"));
    QVERIFY(message);
    QCOMPARE(message->messageNumber, 41);
    const SecretBytes plain = primitives::open(bytesAt(all, u"envelope_key"_s),
                                               {message->nonce, message->ciphertext, message->tag}, "41");
    QCOMPARE(QString::fromUtf8(plain.view()), text);

    const QJsonObject group = *json::object(all, u"zk");
    const SecretBytes key(bytesAt(group, u"group_key"_s));
    QCOMPARE(zk::decrypt(*json::object(group, u"payload"), key), text);
    const auto member = P256PrivateKey::fromRaw(bytesAt(group, u"member_key"_s));
    QCOMPARE(zk::exportPublicJWK(member->publicKey()), *json::object(group, u"member_jwk"));
    QCOMPARE(zk::unwrap(*json::object(group, u"wrapped"), *member).view(), key.view());
    QCOMPARE(EncryptedFileStorage::deriveKey(counting(32), "com.orvanetalk.OrvaneTalk").view(),
             bytesAt(all, u"storage_key"_s));
}

void TestEncryptedForms::theRatchetStepsAsAnotherImplementation() {
    const QJsonObject expected = *json::object(wire(), u"ratchet");
    QList<QByteArray> publicKeys;
    for (int run = 0; run < 2; ++run) {
        RS state;
        state.rootKey = SecretBytes(bytesAt(expected, u"root"_s));
        state.msgNum = 9;
        ratchet::advance(state);
        QCOMPARE(state.rootKey.view(), bytesAt(expected, u"next_root"_s));
        QCOMPARE(state.sendCK->view(), bytesAt(expected, u"send_chain"_s));
        QCOMPARE(state.msgNum, 0);
        QVERIFY(!state.receiveCK && !state.peerEph);
        publicKeys.append(state.ourEph->publicKey());
    }
    // The fresh key plays no part in what comes out.
    QVERIFY(publicKeys.at(0) != publicKeys.at(1));
    const ratchet::ChainStep step = ratchet::derive(SecretBytes(bytesAt(expected, u"chain"_s)));
    QCOMPARE(step.messageKey.view(), bytesAt(expected, u"message_key"_s));
    QCOMPARE(step.nextKey.view(), bytesAt(expected, u"next_chain"_s));
}

void TestEncryptedForms::envelopes_data() {
    QTest::addColumn<QString>("content");
    QTest::addColumn<bool>("isEnvelope");
    const auto row = [](const char *name, const QJsonObject &object, bool good) {
        QTest::newRow(name) << base64(json::compact(object)) << good;
    };
    row("whole", envelope(), true);
    row("extra keys, nested", with(envelope(), u"x"_s, QJsonArray{QJsonObject{{u"y"_s, 1}}}), true);
    row("group", without(without(envelope(), u"messageNumber"_s), u"ephemeralKey"_s), true);
    row("nulls count as absent", with(with(envelope(), u"messageNumber"_s, {}), u"ephemeralKey"_s, {}), true);
    row("number as 3.0", with(envelope(), u"messageNumber"_s, 3.0), true);
    row("key of an odd size", with(envelope(), u"ephemeralKey"_s, base64("short")), true);
    row("number as text", with(envelope(), u"messageNumber"_s, u"3"_s), false);
    row("number with a fraction", with(envelope(), u"messageNumber"_s, 3.5), false);
    row("key as number", with(envelope(), u"ephemeralKey"_s, 3), false);
    row("key that is no base64", with(envelope(), u"ephemeralKey"_s, u"a"_s), false);
    for (const QString &key : {u"ciphertext"_s, u"nonce"_s, u"tag"_s}) {
        row(qPrintable(u"without "_s + key), without(envelope(), key), false);
        row(qPrintable(key + u" null"_s), with(envelope(), key, {}), false);
        row(qPrintable(key + u" as list"_s), with(envelope(), key, QJsonArray{1, 2}), false);
        row(qPrintable(key + u" in base64url"_s), with(envelope(), key, u"-_-_"_s), false);
    }
    QTest::newRow("plain text") << u"hello there"_s << false;
    QTest::newRow("text that is base64") << u"hell"_s << false;
    QTest::newRow("empty") << QString() << false;
    QTest::newRow("a list") << base64("[]") << false;
    QTest::newRow("deep") << base64(QByteArray(100'000, '[')) << false;
    QTest::newRow("no UTF-8") << base64("{\"\xff\":1}") << false;
    QTest::newRow("line breaks") << base64(json::compact(envelope())).insert(40, u'\n') << false;
    QTest::newRow("10 MB") << base64(json::compact(
                                  with(envelope(), u"ciphertext"_s, base64(QByteArray(7'500'000, 'c')))))
                           << true;
}

void TestEncryptedForms::envelopes() {
    QFETCH(QString, content);
    const auto message = EncryptedMessage::fromContent(content);
    QTEST(message.has_value(), "isEnvelope");
    if (message)
        QCOMPARE(EncryptedMessage::fromContent(message->toContent()), message);
}

void TestEncryptedForms::jwks_data() {
    QTest::addColumn<QJsonObject>("jwk");
    QTest::addColumn<QString>("failure");
    const QJsonObject good = *json::object(*json::object(wire(), u"zk"), u"member_jwk");
    const auto coordinate = [](int size) {
        return QString::fromLatin1(
            QByteArray(size, 'x').toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
    };
    QTest::newRow("whole") << good << QString();
    QTest::newRow("x and y alone, another kty")
        << with(without(without(good, u"crv"_s), u"ext"_s), u"kty"_s, 5) << QString();
    QTest::newRow("padded") << with(good, u"x"_s, *json::text(good, u"x") + u'=') << QString();
    QTest::newRow("no x") << without(good, u"x"_s) << u"invalidJWK"_s;
    QTest::newRow("y as number") << with(good, u"y"_s, 1) << u"invalidJWK"_s;
    QTest::newRow("y no base64") << with(good, u"y"_s, u"*"_s) << u"invalidJWK"_s;
    for (int size : {0, 31, 32, 33})
        QTest::addRow("x of %d bytes", size) << with(good, u"x"_s, coordinate(size)) << u"cipher"_s;
    QTest::newRow("a byte handed over")
        << with(with(good, u"x"_s, coordinate(31)), u"y"_s, coordinate(33)) << u"cipher"_s;
}

void TestEncryptedForms::jwks() {
    QFETCH(QJsonObject, jwk);
    QTEST(failureOf([&] { zk::importPublicJWK(jwk); }), "failure");
}

// The same box as a payload and as a wrapped key; `invalid` stands for the case that each has of its own.
void TestEncryptedForms::boxes_data() {
    QTest::addColumn<QString>("key");
    QTest::addColumn<QJsonValue>("value");
    QTest::addColumn<QString>("failure");
    const QString box = QString::fromLatin1(QByteArray(16, 'c').toBase64(QByteArray::OmitTrailingEquals));
    QTest::newRow("no ciphertext") << u"ciphertext"_s << QJsonValue(QJsonValue::Undefined) << u"invalid"_s;
    QTest::newRow("ciphertext as number") << u"ciphertext"_s << QJsonValue(1) << u"invalid"_s;
    QTest::newRow("ciphertext no base64") << u"ciphertext"_s << QJsonValue(u"!!!!"_s) << u"invalid"_s;
    QTest::newRow("15 bytes") << u"ciphertext"_s << QJsonValue(box.chopped(2)) << u"invalid"_s;
    QTest::newRow("16 bytes") << u"ciphertext"_s << QJsonValue(box) << u"cipher"_s;
    QTest::newRow("no nonce") << u"nonce"_s << QJsonValue(QJsonValue::Undefined) << u"invalid"_s;
    QTest::newRow("nonce as object") << u"nonce"_s << QJsonValue(QJsonObject()) << u"invalid"_s;
    QTest::newRow("nonce of 11 bytes") << u"nonce"_s << QJsonValue(u"bm5ubm5ubm5ubm4"_s) << u"cipher"_s;
    QTest::newRow("empty nonce") << u"nonce"_s << QJsonValue(QString()) << u"cipher"_s;
}

void TestEncryptedForms::boxes() {
    QFETCH(QString, key);
    QFETCH(QJsonValue, value);
    QFETCH(QString, failure);
    const QJsonObject group = *json::object(wire(), u"zk");
    const auto member = P256PrivateKey::fromRaw(bytesAt(group, u"member_key"_s));
    const QJsonObject payload = with(*json::object(group, u"payload"), key, value);
    const QJsonObject wrapped = with(*json::object(group, u"wrapped"), key, value);
    const auto expected = [&](const QString &own) { return failure == u"invalid" ? own : failure; };
    QCOMPARE(failureOf([&] { zk::decrypt(payload, SecretBytes(bytesAt(group, u"group_key"_s))); }),
             expected(u"invalidPayload"_s));
    QCOMPARE(failureOf([&] { zk::unwrap(wrapped, *member); }), expected(u"invalidWrap"_s));
    QCOMPARE(failureOf([&] { zk::unwrap(with(wrapped, u"ephemeral_public_jwk"_s, 1), *member); }),
             u"invalidWrap"_s);
    QCOMPARE(failureOf([&] { zk::decrypt(*json::object(group, u"payload"), primitives::randomKey()); }),
             u"cipher"_s);
}

void TestEncryptedForms::textsComeBack() {
    const SecretBytes key = primitives::randomKey();
    for (const QString &text : {QString(), u"hi"_s, u"\0\u202e👋🏽"_s, QString(1'000'000, u'я')}) {
        const QJsonObject payload = zk::encrypt(text, key);
        QCOMPARE(zk::decrypt(payload, key), text);
        QVERIFY(payload != zk::encrypt(text, key));
    }
    QCOMPARE(json::text(zk::encrypt({}, key), u"ciphertext")->size(), 22);
    // Bytes that are no text.
    const primitives::Box box = primitives::seal(key.view(), QByteArray(12, 'n'), "\xc3\x28");
    const auto url = [](const QByteArray &bytes) {
        return QString::fromLatin1(bytes.toBase64(QByteArray::Base64UrlEncoding));
    };
    const QJsonObject payload{{u"ciphertext"_s, url(box.ciphertext + box.tag)}, {u"nonce"_s, url(box.nonce)}};
    QCOMPARE(failureOf([&] { zk::decrypt(payload, key); }), u"invalidPayload"_s);
}

void TestEncryptedForms::storedBlobs() {
    const QTemporaryDir home;
    EncryptedFileStorage storage(home.path());
    const QDir folder(home.filePath(u".orvanetalk/chats"_s));
    QVERIFY(folder.exists());
    QVERIFY(!storage.save(u"3"_s, "blob"));
    storage.configure(QByteArray(32, 'm'));
    for (const QString &id : {u"3"_s, u"../../escape"_s, u""_s, QString(10'000, u'x')}) {
        QVERIFY(storage.save(id, "blob of " + id.toUtf8()));
        QCOMPARE(storage.load(id), "blob of " + id.toUtf8());
    }
    QCOMPARE(folder.entryList(QDir::Files).size(), 4);
    QCOMPARE(QDir(home.path()).entryList(QDir::Files | QDir::Hidden).size(), 0);
    // Another key, another chat's file, a file cut short.
    storage.configure(QByteArray(32, 'n'));
    QVERIFY(!storage.load(u"3"_s));
    storage.configure(QByteArray(32, 'm'));
    for (const QString &name : folder.entryList(QDir::Files))
        QVERIFY(QFile::resize(folder.filePath(name), 27));
    QVERIFY(!storage.load(u"3"_s));
    storage.remove(u"3"_s);
    QCOMPARE(folder.entryList(QDir::Files).size(), 3);
}

ORVANE_TEST_MAIN(TestEncryptedForms)
#include "tst_encrypted_forms.moc"
