// SPDX-License-Identifier: MIT
#include "Encryption/AgreementKeys.h"
#include "Encryption/Base64Url.h"
#include "Support/TestMain.h"

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

struct GcmVector {
    const char *key, *nonce, *plain, *additional, *ciphertext, *tag;
};

// The published test cases 13, 14 and 16 for 256-bit keys.
const GcmVector gcmVectors[] = {{"0000000000000000000000000000000000000000000000000000000000000000",
                                 "000000000000000000000000", "", "", "", "530f8afbc74536b9a963b4f1c4cb738b"},
                                {"0000000000000000000000000000000000000000000000000000000000000000",
                                 "000000000000000000000000", "00000000000000000000000000000000", "",
                                 "cea7403d4d606b6e074ec5d3baf39d18", "d0d1c8a799996bf0265b98b5d48ab919"},
                                {"feffe9928665731c6d6a8f9467308308feffe9928665731c6d6a8f9467308308",
                                 "cafebabefacedbaddecaf888",
                                 "d9313225f88406e5a55909c5aff5269a86a7a9531534f7da2e4c303d8a318a721c3c0c95956"
                                 "809532fcf0e2449a6b525b16aedf5aa"
                                 "0de657ba637b39",
                                 "feedfacedeadbeeffeedfacedeadbeefabaddad2",
                                 "522dc1f099567d07f47f37a32a84427d643a8cdcbfe5c0c97598a2bd2555d1aa8cb08e48590"
                                 "dbb3da7b08b1056828838c5f61e6393"
                                 "ba7a0abcc9f662",
                                 "76fc6ece0f4e1768cddf8853bb2d551b"}};

} // namespace

// Against the vectors of the standards.
class TestPrimitives : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void hashes();
    void derivation();
    void gcm();
    void gcmRefuses_data();
    void gcmRefuses();
    void x25519();
    void p256();
    void base64_data();
    void base64();
    void secretsAreMovedNotCopied();
};

void TestPrimitives::hashes() {
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

void TestPrimitives::derivation() {
    const QByteArray material(22, '\x0b');
    QCOMPARE(hex(primitives::hkdfSha256(material, hex("000102030405060708090a0b0c"),
                                        hex("f0f1f2f3f4f5f6f7f8f9"), 42)),
             "3cb25f25faacd57a90434f64d0362f2a2d2d0a90cf1a5a4c5db02d56ecc4c5bf34007208d5b887185865");
    QCOMPARE(hex(primitives::hkdfSha256(material, {}, {}, 42)),
             "8da4e775a563c18f715f802a063c5a31b8a11f5c5ee1879ec3454e5f3c738d2d9d201395faa4b61a96c8");
}

void TestPrimitives::gcm() {
    for (const GcmVector &vector : gcmVectors) {
        const primitives::Box box =
            primitives::seal(hex(vector.key), hex(vector.nonce), hex(vector.plain), hex(vector.additional));
        QCOMPARE(box.ciphertext.toHex(), vector.ciphertext);
        QCOMPARE(box.tag.toHex(), vector.tag);
        QCOMPARE(hex(primitives::open(hex(vector.key), box, hex(vector.additional))), vector.plain);
    }
}

void TestPrimitives::gcmRefuses_data() {
    QTest::addColumn<int>("keySize");
    QTest::addColumn<int>("nonceSize");
    QTest::addColumn<int>("tagSize");
    QTest::addColumn<QByteArray>("additional");
    QTest::addColumn<int>("flipped");
    const QByteArray number("7");
    QTest::newRow("nothing wrong") << 32 << 12 << 16 << number << -1;
    for (int size : {0, 16, 31, 33})
        QTest::addRow("key of %d", size) << size << 12 << 16 << number << -1;
    for (int size : {0, 11, 13, 16})
        QTest::addRow("nonce of %d", size) << 32 << size << 16 << number << -1;
    for (int size : {0, 4, 15, 17})
        QTest::addRow("tag of %d", size) << 32 << 12 << size << number << -1;
    QTest::newRow("other additional data") << 32 << 12 << 16 << QByteArray("8") << -1;
    QTest::newRow("no additional data") << 32 << 12 << 16 << QByteArray() << -1;
    QTest::newRow("a flipped bit") << 32 << 12 << 16 << number << 3;
}

void TestPrimitives::gcmRefuses() {
    QFETCH(int, keySize);
    QFETCH(int, nonceSize);
    QFETCH(int, tagSize);
    QFETCH(QByteArray, additional);
    QFETCH(int, flipped);
    const QByteArray key(32, 'k');
    primitives::Box box = primitives::seal(key, QByteArray(12, 'n'), "twenty bytes of text", "7");
    if (flipped >= 0)
        box.ciphertext[flipped] = char(box.ciphertext[flipped] ^ 1);
    box.nonce = (box.nonce + QByteArray(9, 'n')).first(nonceSize);
    box.tag = (box.tag + "x").first(tagSize);
    const QByteArray usedKey = (key + "k").first(keySize);
    const bool good = keySize == 32 && nonceSize == 12 && tagSize == 16 && additional == "7" && flipped < 0;
    if (good) {
        QCOMPARE(primitives::open(usedKey, box, additional).view(), QByteArrayView("twenty bytes of text"));
        return;
    }
    QVERIFY_EXCEPTION_THROWN(primitives::open(usedKey, box, additional), CipherError);
    if (keySize != 32 || nonceSize != 12)
        QVERIFY_EXCEPTION_THROWN(primitives::seal(usedKey, box.nonce, "text"), CipherError);
}

void TestPrimitives::x25519() {
    const auto bob =
        X25519PrivateKey::fromRaw(hex("5dab087e624a8a4b79e17f8b83800ee66f3bb1292618b6fd1c2f8b27ff88e0eb"));
    const QByteArray alice = hex("8520f0098930a754748b7ddcb43ef75a0dbf3a0d26381af4eba4a98eaa9b4e6a");
    QCOMPARE(bob->publicKey().toHex(), "de9edb7d7b7dc1b4d35b61c2ece435373f8343c85b78674dadfc7e146f882b4f");
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

void TestPrimitives::p256() {
    // The key pair of RFC 7517, appendix A.
    const auto own =
        P256PrivateKey::fromRaw(*fromBase64Url(u"870MB6gfuTJ4HtUnUvYMyJpr5eUZNP4Bk43bVdj3eAE"_s));
    const QByteArray point = '\x04' + *fromBase64Url(u"MKBCTNIcKUSDii11ySs3526iDZ8AiTo7Tu6KPAqv7D4"_s) +
                             *fromBase64Url(u"4Etl6SRW2YiLUrN5vfvVHuhp7x8PxltmWWlbbM4IFyM"_s);
    QCOMPARE(own->publicKey().x963(), point);
    QCOMPARE(toBase64Url(own->raw().view().toByteArray()), u"870MB6gfuTJ4HtUnUvYMyJpr5eUZNP4Bk43bVdj3eAE"_s);
    const P256PrivateKey other = P256PrivateKey::generate();
    QCOMPARE(hex(own->agree(other.publicKey())), hex(other.agree(own->publicKey())));

    QByteArray off = point;
    off[64] = char(off[64] ^ 1);
    for (const QByteArray &bad :
         {QByteArray(), point.chopped(1), point + 'x', '\x02' + point.mid(1, 32), '\x05' + point.mid(1), off,
          '\x04' + QByteArray(64, '\0'), '\x04' + QByteArray(64, '\xff'), QByteArray(1, '\0')})
        QVERIFY2(!P256PublicKey::fromX963(bad), bad.toHex().constData());
    const QByteArray order = hex("ffffffff00000000ffffffffffffffffbce6faada7179e84f3b9cac2fc632551");
    for (const QByteArray &bad : {QByteArray(), QByteArray(31, 'k'), QByteArray(33, 'k'),
                                  QByteArray(32, '\0'), order, QByteArray(32, '\xff')})
        QVERIFY2(!P256PrivateKey::fromRaw(bad), bad.toHex().constData());
}

void TestPrimitives::base64_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("standard");
    QTest::addColumn<bool>("url");
    QTest::newRow("empty") << "" << true << true;
    QTest::newRow("padded") << "YQ==" << true << true;
    QTest::newRow("bare") << "YQ" << false << true;
    QTest::newRow("half padded") << "YQ=" << false << true;
    QTest::newRow("one letter") << "Y" << false << false;
    QTest::newRow("letters of URLs") << "-_-_" << false << true;
    QTest::newRow("standard letters") << "+/+/" << true << true;
    QTest::newRow("line break") << "YWFh\nYWFh" << false << false;
    QTest::newRow("blank") << "YWF h" << false << false;
    QTest::newRow("padding inside") << "YQ==YQ==" << false << false;
    QTest::newRow("letter beyond ASCII") << "YWFы" << false << false;
    QTest::newRow("no base64") << "{}{}" << false << false;
}

void TestPrimitives::base64() {
    QFETCH(QString, text);
    QCOMPARE(fromBase64(text).has_value(),
             *static_cast<bool *>(QTest::qData("standard", qMetaTypeId<bool>())));
    QCOMPARE(fromBase64Url(text).has_value(), *static_cast<bool *>(QTest::qData("url", qMetaTypeId<bool>())));
}

void TestPrimitives::secretsAreMovedNotCopied() {
    SecretBytes key(QByteArrayView("secret"));
    const uchar *place = key.data();
    SecretBytes moved = std::move(key);
    QCOMPARE(moved.data(), place);
    QCOMPARE(key.size(), 0); // NOLINT(bugprone-use-after-move): that it is empty is the point
    QVERIFY(moved.clone().data() != place);
    static_assert(!std::is_copy_constructible_v<SecretBytes>);
}

ORVANE_TEST_MAIN(TestPrimitives)
#include "tst_primitives.moc"
