// SPDX-License-Identifier: MIT
#include "Base/Json.h"
#include "Encryption/AgreementKeys.h"
#include "Encryption/Base64Url.h"
#include "Encryption/EncryptedFileStorage.h"
#include "Encryption/EncryptedMessage.h"
#include "Encryption/Ratchet.h"
#include "Encryption/ZkForms.h"
#include "Support/InRow.h"
#include "Support/TestMain.h"

#include <QDir>
#include <QFile>
#include <type_traits>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

QByteArray hex(const char *digits) {
    return QByteArray::fromHex(digits);
}

QByteArray hex(const SecretBytes &bytes) {
    return bytes.view().toByteArray().toHex();
}

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
    return {{"ciphertext", base64("hello")},
            {"nonce", base64(QByteArray(12, 'n'))},
            {"tag", base64(QByteArray(16, 't'))},
            {"messageNumber", 3},
            {"ephemeralKey", base64(QByteArray(32, 'e'))}};
}

// An undefined value takes the key away.
QJsonObject with(QJsonObject object, const QString &key, const QJsonValue &value) {
    object.insert(key, value);
    return object;
}

QJsonObject without(const QJsonObject &object, const QString &key) {
    return with(object, key, QJsonValue::Undefined);
}

template <typename F>
QString failureOf(F action) {
    try {
        action();
    } catch (const ZkCryptoError &error) {
        static const QStringList names{"keychain", "invalidJWK", "invalidWrap", "invalidPayload"};
        return names.at(int(error.which()));
    } catch (const CipherError &) {
        return "cipher";
    }
    return {};
}

} // namespace

// Against the vectors of the standards and what another implementation wrote.
class TestEncryptedForms : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void hashes() {
        QCOMPARE(primitives::sha256("abc").toHex(),
                 "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
        QCOMPARE(primitives::sha256({}).toHex(),
                 "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
        QCOMPARE(hex(primitives::hmacSha256(QByteArray(20, '\x0b'), {"Hi ", "", "There"})),
                 "b0344c61d8db38535ca8afceaf0bf12b881dc200c9833da726e9376c2e32cff7");
        QCOMPARE(hex(primitives::hmacSha256("Jefe", {"what do ya want ", "for nothing?"})),
                 "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843");
        QCOMPARE(hex(primitives::hmacSha256(QByteArray(131, '\xaa'),
                                            {"Test Using Larger Than Block-Size Key - Hash Key First"})),
                 "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54");
    }

    void derivation() {
        const QByteArray material(22, '\x0b');
        QCOMPARE(hex(primitives::hkdfSha256(material, hex("000102030405060708090a0b0c"),
                                            hex("f0f1f2f3f4f5f6f7f8f9"), 42)),
                 "3cb25f25faacd57a90434f64d0362f2a2d2d0a90cf1a5a4c5db02d56ecc4c5bf34007208d5b887185865");
        QCOMPARE(hex(primitives::hkdfSha256(material, {}, {}, 42)),
                 "8da4e775a563c18f715f802a063c5a31b8a11f5c5ee1879ec3454e5f3c738d2d9d201395faa4b61a96c8");
    }

    void gcm() {
        const auto check = [](const char *key, const char *nonce, const char *plain, const char *additional,
                              const char *ciphertext, const char *tag) {
            const primitives::Box box = primitives::seal(hex(key), hex(nonce), hex(plain), hex(additional));
            QCOMPARE(box.ciphertext.toHex(), ciphertext);
            QCOMPARE(box.tag.toHex(), tag);
            QCOMPARE(hex(primitives::open(hex(key), box, hex(additional))), plain);
        };
        // The published test cases 13, 14 and 16 for 256-bit keys.
        const QByteArray zeros(64, '0');
        check(zeros, "000000000000000000000000", "", "", "", "530f8afbc74536b9a963b4f1c4cb738b");
        check(zeros, "000000000000000000000000", "00000000000000000000000000000000", "",
              "cea7403d4d606b6e074ec5d3baf39d18", "d0d1c8a799996bf0265b98b5d48ab919");
        check("feffe9928665731c6d6a8f9467308308feffe9928665731c6d6a8f9467308308", "cafebabefacedbaddecaf888",
              "d9313225f88406e5a55909c5aff5269a86a7a9531534f7da2e4c303d8a318a72"
              "1c3c0c95956809532fcf0e2449a6b525b16aedf5aa0de657ba637b39",
              "feedfacedeadbeeffeedfacedeadbeefabaddad2",
              "522dc1f099567d07f47f37a32a84427d643a8cdcbfe5c0c97598a2bd2555d1aa"
              "8cb08e48590dbb3da7b08b1056828838c5f61e6393ba7a0abcc9f662",
              "76fc6ece0f4e1768cddf8853bb2d551b");
    }

    void gcmRefuses() {
        const auto check = [](const char *name, int keySize, int nonceSize, int tagSize,
                              const QByteArray &additional = "7", int flipped = -1) {
            IN_ROW(name);
            primitives::Box box =
                primitives::seal(QByteArray(32, 'k'), QByteArray(12, 'n'), "twenty bytes of text", "7");
            QCOMPARE(primitives::open(QByteArray(32, 'k'), box, "7").view(), "twenty bytes of text");
            if (flipped >= 0)
                box.ciphertext[flipped] = char(box.ciphertext[flipped] ^ 1);
            box.nonce = (box.nonce + QByteArray(9, 'n')).first(nonceSize);
            box.tag = (box.tag + "x").first(tagSize);
            const QByteArray key(keySize, 'k');
            QVERIFY_EXCEPTION_THROWN(primitives::open(key, box, additional), CipherError);
            if (keySize != 32 || nonceSize != 12)
                QVERIFY_EXCEPTION_THROWN(primitives::seal(key, box.nonce, "text"), CipherError);
        };
        for (const int size : {0, 16, 31, 33})
            check("key", size, 12, 16);
        for (const int size : {0, 11, 13, 16})
            check("nonce", 32, size, 16);
        for (const int size : {0, 4, 15, 17})
            check("tag", 32, 12, size);
        check("other additional data", 32, 12, 16, "8");
        check("no additional data", 32, 12, 16, "");
        check("a flipped bit", 32, 12, 16, "7", 3);
    }

    void x25519() {
        const auto bob = X25519PrivateKey::fromRaw(
            hex("5dab087e624a8a4b79e17f8b83800ee66f3bb1292618b6fd1c2f8b27ff88e0eb"));
        const QByteArray alice = hex("8520f0098930a754748b7ddcb43ef75a0dbf3a0d26381af4eba4a98eaa9b4e6a");
        QCOMPARE(bob->publicKey().toHex(),
                 "de9edb7d7b7dc1b4d35b61c2ece435373f8343c85b78674dadfc7e146f882b4f");
        QCOMPARE(hex(bob->agree(alice)), "4a5d9d5ba4ce2de1728e3bf480350f25e07e21c947d19e3376f09b3c1e161742");
        QCOMPARE(hex(bob->raw()), "5dab087e624a8a4b79e17f8b83800ee66f3bb1292618b6fd1c2f8b27ff88e0eb");
        for (int size : {0, 31, 33}) {
            QVERIFY(!X25519PrivateKey::fromRaw(QByteArray(size, 'k')));
            QVERIFY_EXCEPTION_THROWN(bob->agree(QByteArray(size, 'k')), CipherError);
        }
        // Points of low order would give a secret that everybody knows.
        for (const char *low : {"0000000000000000000000000000000000000000000000000000000000000000",
                                "0100000000000000000000000000000000000000000000000000000000000000",
                                "e0eb7a7c3b41b8ae1656e3faf19fc46ada098deb9c32b1fd866205165f49b800",
                                "ecffffffffffffffffffffffffffffffffffffffffffffffffffffffffffff7f"})
            QVERIFY_EXCEPTION_THROWN(bob->agree(hex(low)), CipherError);
    }

    void p256() {
        // The key pair of RFC 7517, appendix A.
        const auto own =
            P256PrivateKey::fromRaw(*fromBase64Url(u"870MB6gfuTJ4HtUnUvYMyJpr5eUZNP4Bk43bVdj3eAE"_s));
        const QByteArray point = '\x04' + *fromBase64Url(u"MKBCTNIcKUSDii11ySs3526iDZ8AiTo7Tu6KPAqv7D4"_s) +
                                 *fromBase64Url(u"4Etl6SRW2YiLUrN5vfvVHuhp7x8PxltmWWlbbM4IFyM"_s);
        QCOMPARE(own->publicKey().x963(), point);
        QCOMPARE(toBase64Url(own->raw().view().toByteArray()), "870MB6gfuTJ4HtUnUvYMyJpr5eUZNP4Bk43bVdj3eAE");
        const P256PrivateKey other = P256PrivateKey::generate();
        QCOMPARE(hex(own->agree(other.publicKey())), hex(other.agree(own->publicKey())));

        QByteArray off = point;
        off[64] = char(off[64] ^ 1);
        for (const QByteArray &bad :
             {QByteArray(), point.chopped(1), point + 'x', '\x02' + point.mid(1, 32), '\x05' + point.mid(1),
              off, '\x04' + QByteArray(64, '\0'), '\x04' + QByteArray(64, '\xff'), QByteArray(1, '\0')})
            QVERIFY2(!P256PublicKey::fromX963(bad), bad.toHex().constData());
        const QByteArray order = hex("ffffffff00000000ffffffffffffffffbce6faada7179e84f3b9cac2fc632551");
        for (const QByteArray &bad : {QByteArray(), QByteArray(31, 'k'), QByteArray(33, 'k'),
                                      QByteArray(32, '\0'), order, QByteArray(32, '\xff')})
            QVERIFY2(!P256PrivateKey::fromRaw(bad), bad.toHex().constData());
    }

    void base64IsReadStrictly() {
        const auto check = [](const QString &text, bool standard, bool url) {
            IN_ROW(text.toUtf8());
            QCOMPARE(fromBase64(text).has_value(), standard);
            QCOMPARE(fromBase64Url(text).has_value(), url);
        };
        check("", true, true);
        check("YQ==", true, true);
        check("+/+/", true, true);
        for (const char *bare : {"YQ", "YQ=", "-_-_"})
            check(bare, false, true);
        for (const char *wrong : {"Y", "YWFh\nYWFh", "YWF h", "YQ==YQ==", "YWFы", "{}{}"})
            check(wrong, false, false);
    }

    void secretsAreMovedNotCopied() {
        SecretBytes key(QByteArrayView("secret"));
        const uchar *place = key.data();
        SecretBytes moved = std::move(key);
        QCOMPARE(moved.data(), place);
        QCOMPARE(key.size(), 0); // NOLINT(bugprone-use-after-move): that it is empty is the point
        QVERIFY(moved.clone().data() != place);
        static_assert(!std::is_copy_constructible_v<SecretBytes>);
    }

    void formsOfAnotherImplementationAreRead() {
        const QJsonObject all = wire();
        const QString text = *json::text(all, u"text");
        const auto message = EncryptedMessage::fromContent(*json::text(all, u"envelope"));
        QVERIFY(message);
        QCOMPARE(message->messageNumber, 41);
        const SecretBytes plain = primitives::open(bytesAt(all, "envelope_key"),
                                                   {message->nonce, message->ciphertext, message->tag}, "41");
        QCOMPARE(QString::fromUtf8(plain.view()), text);

        const QJsonObject group = *json::object(all, u"zk");
        const SecretBytes key(bytesAt(group, "group_key"));
        QCOMPARE(zk::decrypt(*json::object(group, u"payload"), key), text);
        const auto member = P256PrivateKey::fromRaw(bytesAt(group, "member_key"));
        QCOMPARE(zk::exportPublicJWK(member->publicKey()), *json::object(group, u"member_jwk"));
        QCOMPARE(zk::unwrap(*json::object(group, u"wrapped"), *member).view(), key.view());
        QCOMPARE(EncryptedFileStorage::deriveKey(counting(32), "com.orvanetalk.OrvaneTalk").view(),
                 bytesAt(all, "storage_key"));
    }

    void theRatchetStepsAsAnotherImplementation() {
        const QJsonObject expected = *json::object(wire(), u"ratchet");
        QList<QByteArray> publicKeys;
        for (int run = 0; run < 2; ++run) {
            RS state;
            state.rootKey = SecretBytes(bytesAt(expected, "root"));
            state.msgNum = 9;
            ratchet::advance(state);
            QCOMPARE(state.rootKey.view(), bytesAt(expected, "next_root"));
            QCOMPARE(state.sendCK->view(), bytesAt(expected, "send_chain"));
            QCOMPARE(state.msgNum, 0);
            QVERIFY(!state.receiveCK && !state.peerEph);
            publicKeys.append(state.ourEph->publicKey());
        }
        // The fresh key plays no part in what comes out.
        QVERIFY(publicKeys.at(0) != publicKeys.at(1));
        const ratchet::ChainStep step = ratchet::derive(SecretBytes(bytesAt(expected, "chain")));
        QCOMPARE(step.messageKey.view(), bytesAt(expected, "message_key"));
        QCOMPARE(step.nextKey.view(), bytesAt(expected, "next_chain"));
    }

    void envelopes() {
        const auto check = [](const char *name, const QString &content, bool isEnvelope) {
            IN_ROW(name);
            const auto message = EncryptedMessage::fromContent(content);
            QCOMPARE(message.has_value(), isEnvelope);
            if (message)
                QCOMPARE(EncryptedMessage::fromContent(message->toContent()), message);
        };
        const auto sealed = [](const QJsonObject &object) { return base64(json::compact(object)); };
        const auto changed = [&](const char *name, const QString &key, const QJsonValue &value, bool good) {
            check(name, sealed(with(envelope(), key, value)), good);
        };
        check("whole", sealed(envelope()), true);
        changed("extra keys, nested", "x", QJsonArray{QJsonObject{{"y", 1}}}, true);
        check("group", sealed(without(without(envelope(), "messageNumber"), "ephemeralKey")), true);
        check("nulls count as absent",
              sealed(with(with(envelope(), "messageNumber", {}), "ephemeralKey", {})), true);
        changed("number as 3.0", "messageNumber", 3.0, true);
        changed("key of an odd size", "ephemeralKey", base64("short"), true);
        changed("number as text", "messageNumber", "3", false);
        changed("number with a fraction", "messageNumber", 3.5, false);
        changed("key as number", "ephemeralKey", 3, false);
        changed("key that is no base64", "ephemeralKey", "a", false);
        for (const char *key : {"ciphertext", "nonce", "tag"}) {
            for (const QJsonValue &wrong : {QJsonValue(QJsonValue::Undefined), QJsonValue(),
                                            QJsonValue(QJsonArray{1, 2}), QJsonValue("-_-_")})
                changed(key, key, wrong, false);
        }
        check("plain text", "hello there", false);
        check("text that is base64", "hell", false);
        check("empty", "", false);
        check("a list", base64("[]"), false);
        check("deep", base64(QByteArray(100'000, '[')), false);
        check("no UTF-8", base64("{\"\xff\":1}"), false);
        check("line breaks", sealed(envelope()).insert(40, u'\n'), false);
        changed("10 MB", "ciphertext", base64(QByteArray(7'500'000, 'c')), true);
    }

    void jwks() {
        const QJsonObject good = *json::object(*json::object(wire(), u"zk"), u"member_jwk");
        const auto check = [](const char *name, const QJsonObject &jwk, const QString &failure) {
            IN_ROW(name);
            QCOMPARE(failureOf([&] { zk::importPublicJWK(jwk); }), failure);
        };
        const auto coordinate = [](int size) { return toBase64Url(QByteArray(size, 'x')); };
        check("whole", good, "");
        check("x and y alone, another kty", with(without(without(good, "crv"), "ext"), "kty", 5), "");
        check("padded", with(good, "x", *json::text(good, u"x") + '='), "");
        check("no x", without(good, "x"), "invalidJWK");
        check("y as number", with(good, "y", 1), "invalidJWK");
        check("y no base64", with(good, "y", "*"), "invalidJWK");
        for (const int size : {0, 31, 32, 33})
            check("x of another size", with(good, "x", coordinate(size)), "cipher");
        check("a byte handed over", with(with(good, "x", coordinate(31)), "y", coordinate(33)), "cipher");
    }

    // The same box as a payload and as a wrapped key; "invalid" stands for the case that each has of its own.
    void boxes() {
        const QJsonObject group = *json::object(wire(), u"zk");
        const auto member = P256PrivateKey::fromRaw(bytesAt(group, "member_key"));
        const QJsonObject payload = *json::object(group, u"payload");
        const QJsonObject wrapped = *json::object(group, u"wrapped");
        const auto check = [&](const char *name, const QString &key, const QJsonValue &value,
                               const char *failure) {
            IN_ROW(name);
            const SecretBytes groupKey(bytesAt(group, "group_key"));
            const auto expected = [&](const char *own) {
                return QString(qstrcmp(failure, "invalid") ? failure : own);
            };
            QCOMPARE(failureOf([&] { zk::decrypt(with(payload, key, value), groupKey); }),
                     expected("invalidPayload"));
            QCOMPARE(failureOf([&] { zk::unwrap(with(wrapped, key, value), *member); }),
                     expected("invalidWrap"));
        };
        const QString box = QString::fromLatin1(QByteArray(16, 'c').toBase64(QByteArray::OmitTrailingEquals));
        check("no ciphertext", "ciphertext", QJsonValue::Undefined, "invalid");
        check("ciphertext as number", "ciphertext", 1, "invalid");
        check("ciphertext no base64", "ciphertext", "!!!!", "invalid");
        check("15 bytes", "ciphertext", box.chopped(2), "invalid");
        check("16 bytes", "ciphertext", box, "cipher");
        check("no nonce", "nonce", QJsonValue::Undefined, "invalid");
        check("nonce as object", "nonce", QJsonObject(), "invalid");
        check("nonce of 11 bytes", "nonce", "bm5ubm5ubm5ubm4", "cipher");
        check("empty nonce", "nonce", "", "cipher");
        QCOMPARE(failureOf([&] { zk::unwrap(with(wrapped, "ephemeral_public_jwk", 1), *member); }),
                 "invalidWrap");
        QCOMPARE(failureOf([&] { zk::decrypt(payload, primitives::randomKey()); }), "cipher");
    }

    void textsComeBack() {
        const SecretBytes key = primitives::randomKey();
        for (const QString &text : {QString(), u"hi"_s, u"\0\u202e👋🏽"_s, QString(1'000'000, u'я')}) {
            const QJsonObject payload = zk::encrypt(text, key);
            QCOMPARE(zk::decrypt(payload, key), text);
            QVERIFY(payload != zk::encrypt(text, key));
        }
        QCOMPARE(json::text(zk::encrypt({}, key), u"ciphertext")->size(), 22);
        // Bytes that are no text.
        const primitives::Box box = primitives::seal(key.view(), QByteArray(12, 'n'), "\xc3\x28");
        const QJsonObject payload{{"ciphertext", toBase64Url(box.ciphertext + box.tag)},
                                  {"nonce", toBase64Url(box.nonce)}};
        QCOMPARE(failureOf([&] { zk::decrypt(payload, key); }), "invalidPayload");
    }

    void storedBlobs() {
        const QTemporaryDir home;
        EncryptedFileStorage storage(home.path());
        const QDir folder(home.filePath(".orvanetalk/chats"));
        QVERIFY(folder.exists());
        QVERIFY(!storage.save("3", "blob"));
        storage.configure(QByteArray(32, 'm'));
        for (const QString &id : {u"3"_s, u"../../escape"_s, u""_s, QString(10'000, u'x')}) {
            QVERIFY(storage.save(id, "blob of " + id.toUtf8()));
            QCOMPARE(storage.load(id), "blob of " + id.toUtf8());
        }
        QCOMPARE(folder.entryList(QDir::Files).size(), 4);
        QCOMPARE(QDir(home.path()).entryList(QDir::Files | QDir::Hidden).size(), 0);
        // Another key, another chat's file, a file cut short.
        storage.configure(QByteArray(32, 'n'));
        QVERIFY(!storage.load("3"));
        storage.configure(QByteArray(32, 'm'));
        for (const QString &name : folder.entryList(QDir::Files))
            QVERIFY(QFile::resize(folder.filePath(name), 27));
        QVERIFY(!storage.load("3"));
        storage.remove("3");
        QCOMPARE(folder.entryList(QDir::Files).size(), 3);
    }
};

ORVANE_TEST_MAIN(TestEncryptedForms)
#include "tst_encrypted_forms.moc"
