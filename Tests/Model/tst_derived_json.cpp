// SPDX-License-Identifier: MIT
#include "Base/Json.h"
#include "Model/ChatFolder.h"
#include "Model/DerivedJson.h"
#include "Model/MessengerChat.h"
#include "Model/RecordKinds.h"

#include <QTest>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

/// One value of each kind that JSON has; two of the numbers, since an integer may not stand for both.
const QList<QJsonValue> &oneOfEachType() {
    static const QList<QJsonValue> values{QJsonValue(),
                                          true,
                                          u"no such value"_s,
                                          QJsonArray{1.5},
                                          QJsonArray{QJsonObject()},
                                          QJsonArray{QJsonValue()},
                                          QJsonObject{{u"id"_s, 5}},
                                          1.5,
                                          1e300};
    return values;
}

bool isText(const QJsonValue &value, const QString &key) {
    static const QStringList closedSets{u"type"_s, u"status"_s, u"deliveryStatus"_s};
    return value.isString() && !closedSets.contains(key);
}

/// Whether `candidate` can't stand where `example` stands. Texts of closed sets and URLs have tests of their
/// own.
bool isMistyped(const QString &key, const QJsonValue &example, const QJsonValue &candidate) {
    if (example.type() != candidate.type())
        return true;
    if (example.isDouble())
        return json::asInteger(example) && (key == u"fileSize" || key == u"unreadCount");
    return !example.isBool() && !isText(example, key);
}

} // namespace

class TestDerivedJson : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void handWrittenBytesAreReadAndWrittenAgain_data() { eachKind(); }
    void handWrittenBytesAreReadAndWrittenAgain();
    void requiredKeysFailTheRecord_data() { eachKey(); }
    void requiredKeysFailTheRecord();
    void mistypedKeysFailTheRecord_data() { eachKey(); }
    void mistypedKeysFailTheRecord();
    void equalityAndHashSeeEveryField_data() { eachKey(); }
    void equalityAndHashSeeEveryField();
    void rawValuesAreExact_data();
    void rawValuesAreExact();
    void everyRawValueIsKnown();
    void datesCountFrom2001();
    void votersAreASet();
    void readingIsAFixedPointForUrls_data();
    void readingIsAFixedPointForUrls();
    void screensSeeRawTextsAndUndefined();

private:
    static void eachKind();
    static void eachKey();
    static const RecordKind &kindNamed(const QString &name);
};

const RecordKind &TestDerivedJson::kindNamed(const QString &name) {
    for (const RecordKind &kind : recordKinds()) {
        if (kind.name == name)
            return kind;
    }
    qFatal("no such kind");
}

void TestDerivedJson::eachKind() {
    QTest::addColumn<QString>("kind");
    for (const RecordKind &kind : recordKinds())
        QTest::newRow(qUtf8Printable(kind.name)) << kind.name;
}

void TestDerivedJson::eachKey() {
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("key");
    for (const RecordKind &kind : recordKinds()) {
        for (const QString &key : json::parseObject(kind.example).value().keys())
            QTest::addRow("%s.%s", qUtf8Printable(kind.name), qUtf8Printable(key)) << kind.name << key;
    }
}

void TestDerivedJson::handWrittenBytesAreReadAndWrittenAgain() {
    QFETCH(QString, kind);
    const RecordKind &tested = kindNamed(kind);
    QJsonObject example = json::parseObject(tested.example).value();
    QCOMPARE(tested.again(example), example);
    const QJsonObject plain = example;
    example.insert(u"unknown"_s, QJsonObject{{u"id"_s, 1}});
    QCOMPARE(tested.again(example), plain);
    QVERIFY(tested.equal(example, plain));
    QCOMPARE(tested.hash(example), tested.hash(plain));
}

void TestDerivedJson::requiredKeysFailTheRecord() {
    QFETCH(QString, kind);
    QFETCH(QString, key);
    const RecordKind &tested = kindNamed(kind);
    QJsonObject without = json::parseObject(tested.example).value();
    without.remove(key);
    QJsonObject withNull = without;
    withNull.insert(key, QJsonValue());
    if (tested.optionalKeys.contains(key)) {
        QCOMPARE(tested.again(without), without);
        QCOMPARE(tested.again(withNull), without);
    } else {
        QVERIFY(!tested.again(without));
        QVERIFY(!tested.again(withNull));
    }
}

void TestDerivedJson::mistypedKeysFailTheRecord() {
    QFETCH(QString, kind);
    QFETCH(QString, key);
    const RecordKind &tested = kindNamed(kind);
    const QJsonObject example = json::parseObject(tested.example).value();
    for (const QJsonValue &value : oneOfEachType()) {
        const bool absent = value.isNull() && tested.optionalKeys.contains(key);
        if (absent || !isMistyped(key, example.value(key), value))
            continue;
        QJsonObject wrong = example;
        wrong.insert(key, value);
        // The stored settings have nothing that they require.
        if (key == u"settings" && value.isObject())
            continue;
        QVERIFY2(!tested.again(wrong), json::compact(wrong).constData());
    }
}

void TestDerivedJson::equalityAndHashSeeEveryField() {
    QFETCH(QString, kind);
    QFETCH(QString, key);
    const RecordKind &tested = kindNamed(kind);
    const QJsonObject example = json::parseObject(tested.example).value();
    QJsonObject other = example;
    const QJsonValue value = example.value(key);
    if (tested.optionalKeys.contains(key))
        other.remove(key);
    else if (value.isBool())
        other.insert(key, !value.toBool());
    else if (value.isDouble())
        other.insert(key, 17);
    else if (value.isArray())
        other.insert(key, QJsonArray());
    else if (value.isObject())
        other.insert(key, QJsonObject());
    else if (isText(value, key))
        other.insert(key, value.toString() + u'x');
    else if (key == u"deliveryStatus")
        other.insert(key, u"failed"_s);
    else if (key == u"status")
        other.insert(key, u"online"_s);
    else
        other.insert(key, kind == u"MessengerChat" ? u"direct"_s : u"file"_s);
    QVERIFY(other != example);
    QVERIFY(!tested.equal(example, other));
    QVERIFY(tested.hash(example) != tested.hash(other));
}

void TestDerivedJson::rawValuesAreExact_data() {
    QTest::addColumn<QString>("raw");
    QTest::newRow("capital") << u"Image"_s;
    QTest::newRow("empty") << QString();
    QTest::newRow("space") << u" image"_s;
    QTest::newRow("space after") << u"image "_s;
    QTest::newRow("qualified") << u"AttachmentType::image"_s;
    QTest::newRow("fully qualified") << u"orvane::AttachmentType::image"_s;
    QTest::newRow("two") << u"image|audio"_s;
    QTest::newRow("number") << u"0"_s;
    QTest::newRow("of another set") << u"aiRequest"_s;
    QTest::newRow("a character of nothing and more") << u"image"_s + QChar(u'\0') + u'x';
}

void TestDerivedJson::rawValuesAreExact() {
    QFETCH(QString, raw);
    QVERIFY(!fromRawText<AttachmentType>(raw));
    QVERIFY(!derived::fromJson<Attachment>({{u"type"_s, raw}}));
}

void TestDerivedJson::everyRawValueIsKnown() {
    const auto known = []<typename E>(E last, const char *texts) {
        const QStringList names = QString::fromLatin1(texts).split(u' ');
        QCOMPARE(int(names.size()), int(last) + 1);
        for (int value = 0; value <= int(last); ++value) {
            QCOMPARE(rawText(E(value)), names.at(value));
            QCOMPARE(fromRawText<E>(names.at(value)), E(value));
        }
    };
    known(MessageType::poll, "text image voice video file sticker location system aiRequest aiResponse poll");
    known(DeliveryStatus::failed, "sending sent delivered read failed");
    known(AttachmentType::sticker, "image audio video file sticker");
    known(ChatType::channel, "direct group channel");
    known(UserStatus::typing, "online offline away typing");
}

void TestDerivedJson::datesCountFrom2001() {
    const auto poll =
        derived::fromJson<MessengerPoll>(json::parseObject(kindNamed(u"MessengerPoll"_s).example).value());
    QCOMPARE(poll->createdAt.toUTC().toString(Qt::ISODateWithMs), u"2001-01-01T00:00:00.000Z"_s);
    const auto message = derived::fromJson<MessengerMessage>(
        json::parseObject(kindNamed(u"MessengerMessage"_s).example).value());
    QCOMPARE(message->timestamp.toUTC().toString(Qt::ISODateWithMs), u"2024-01-02T00:00:00.500Z"_s);
}

void TestDerivedJson::votersAreASet() {
    const auto option = derived::fromJson<PollOption>(
        json::parseObject(R"({"id":"o","text":"t","voters":["b","a","b"]})").value());
    QCOMPARE(option->voters, (QSet<QString>{u"a"_s, u"b"_s}));
    const auto otherOrder = derived::fromJson<PollOption>(
        json::parseObject(R"({"id":"o","text":"t","voters":["a","b"]})").value());
    QVERIFY(*option == *otherOrder);
    QCOMPARE(qHash(*option, 0), qHash(*otherOrder, 0));
}

void TestDerivedJson::readingIsAFixedPointForUrls_data() {
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("valid");
    const auto row = [](const char *url, bool valid) {
        QTest::newRow(url) << QString::fromUtf8(url) << valid;
    };
    row("https://example.org/a%2Fb%20c?x=%26&y#z", true);
    row("HTTPS://EXAMPLE.org:443/../a", true);
    row("file:///home/a%20b/%D0%B6.m4a", true);
    row("relative/path", true);
    row("https://example.org/?a#b#c", true);
    row("data:text/plain,a%0Ab", true);
    row("https://example.org/a b", false);
    row("https://example.org/%zz", false);
    row("http://[::1", false);
    row("https://example.org:99999/", false);
    row("", false);
}

void TestDerivedJson::readingIsAFixedPointForUrls() {
    QFETCH(QString, url);
    QFETCH(bool, valid);
    const auto once = derived::Codec<QUrl>::read(url);
    QCOMPARE(once.has_value(), valid);
    if (!once)
        return;
    const auto twice = derived::Codec<QUrl>::read(derived::Codec<QUrl>::write(*once));
    QCOMPARE(twice, once);
    QCOMPARE(derived::Codec<QUrl>::write(*twice), derived::Codec<QUrl>::write(*once));
}

void TestDerivedJson::screensSeeRawTextsAndUndefined() {
    MessengerMessage message;
    message.type = MessageType::aiResponse;
    message.ttl = 0.5;
    const QMetaObject &meta = MessengerMessage::staticMetaObject;
    const auto seen = [&](const char *name) {
        return meta.property(meta.indexOfProperty(name)).readOnGadget(&message);
    };
    QCOMPARE(seen("type"), QVariant(u"aiResponse"_s));
    QCOMPARE(seen("ttl"), QVariant(0.5));
    QVERIFY(!seen("poll").isValid());
    QVERIFY(seen("reactions").canConvert<QVariantList>());
}

QTEST_GUILESS_MAIN(TestDerivedJson)

#include "tst_derived_json.moc"
