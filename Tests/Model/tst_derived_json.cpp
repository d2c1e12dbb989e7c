// SPDX-License-Identifier: MIT
#include "Base/Json.h"
#include "Model/ChatFolder.h"
#include "Model/DerivedJson.h"
#include "Model/MessengerChat.h"
#include "Support/InRow.h"

#include <QFile>

#include <functional>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

/// One kind of record, seen only through its stored form, with an example of that form written by hand.
struct RecordKind {
    QString name;
    QJsonObject example;
    QStringList optionalKeys;

    /// Reads and writes again; absent when the reading fails.
    std::function<std::optional<QJsonObject>(QJsonObject)> again;
    /// Whether both read as records that are equal.
    std::function<bool(QJsonObject, QJsonObject)> equal;
    std::function<size_t(QJsonObject)> hash;
};

template <typename R>
RecordKind kind(const char *name, const QString &optionalKeys = {}) {
    QFile examples(QStringLiteral(FIXTURES) + "/records.json");
    if (!examples.open(QIODevice::ReadOnly))
        qFatal("no fixtures");
    const QJsonObject example = *json::object(*json::parseObject(examples.readAll()), QString(name));
    const auto read = [](const QJsonObject &object) { return derived::fromJson<R>(object).value(); };
    return {name,
            example,
            optionalKeys.split(' '),
            [](const QJsonObject &object) {
                const auto record = derived::fromJson<R>(object);
                return record ? std::optional(derived::toJson(*record)) : std::nullopt;
            },
            [read](const QJsonObject &one, const QJsonObject &other) { return read(one) == read(other); },
            [read](const QJsonObject &object) { return qHash(read(object), 0); }};
}

// The stored form of each, written by hand.
const QList<RecordKind> &recordKinds() {
    static const QList<RecordKind> kinds{
        kind<ForwardInfo>("ForwardInfo"),
        kind<Attachment>("Attachment", "url localPath mimeType fileSize"),
        kind<MessageReaction>("MessageReaction"),
        kind<MessengerMessage>("MessengerMessage", "editedAt replyToID forwardedFrom ttl attachment poll"),
        kind<MessengerChatSettings>("MessengerChatSettings", "muteUntil disappearingMessages"),
        kind<MessengerChat>("MessengerChat", "title lastMessage roomId"),
        kind<MessengerUser>("MessengerUser", "username avatarURL lastSeen"),
        kind<ChatFolder>("ChatFolder"),
        kind<PollOption>("PollOption"),
        kind<MessengerPoll>("MessengerPoll"),
    };
    return kinds;
}

/// One value of each kind that JSON has; two of the numbers, since an integer may not stand for both.
const QList<QJsonValue> &oneOfEachType() {
    static const QList<QJsonValue> values{QJsonValue(),
                                          true,
                                          "no such value",
                                          QJsonArray{1.5},
                                          QJsonArray{QJsonObject()},
                                          QJsonArray{QJsonValue()},
                                          QJsonObject{{"id", 5}},
                                          1.5,
                                          1e300};
    return values;
}

bool isText(const QJsonValue &value, const QString &key) {
    static const QStringList closedSets{"type", "status", "deliveryStatus"};
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

template <typename F>
void eachKey(F check) {
    for (const RecordKind &kind : recordKinds()) {
        for (const QString &key : kind.example.keys()) {
            IN_ROW(QString(kind.name + '.' + key).toUtf8());
            check(kind, key);
        }
    }
}

} // namespace

class TestDerivedJson : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void handWrittenBytesAreReadAndWrittenAgain() {
        for (const RecordKind &kind : recordKinds()) {
            IN_ROW(kind.name.toUtf8());
            QJsonObject example = kind.example;
            QCOMPARE(kind.again(example), example);
            const QJsonObject plain = example;
            example.insert("unknown", QJsonObject{{"id", 1}});
            QCOMPARE(kind.again(example), plain);
            QVERIFY(kind.equal(example, plain));
            QCOMPARE(kind.hash(example), kind.hash(plain));
        }
    }

    void requiredKeysFailTheRecord() {
        eachKey([](const RecordKind &kind, const QString &key) {
            QJsonObject without = kind.example;
            without.remove(key);
            QJsonObject withNull = without;
            withNull.insert(key, QJsonValue());
            for (const QJsonObject &object : {without, withNull})
                QCOMPARE(kind.again(object),
                         kind.optionalKeys.contains(key) ? std::optional(without) : std::nullopt);
        });
    }

    void mistypedKeysFailTheRecord() {
        eachKey([](const RecordKind &kind, const QString &key) {
            const QJsonObject example = kind.example;
            for (const QJsonValue &value : oneOfEachType()) {
                const bool absent = value.isNull() && kind.optionalKeys.contains(key);
                // The stored settings have nothing that they require.
                const bool empty = key == "settings" && value.isObject();
                if (absent || empty || !isMistyped(key, example.value(key), value))
                    continue;
                QJsonObject wrong = example;
                wrong.insert(key, value);
                QVERIFY2(!kind.again(wrong), json::compact(wrong));
            }
        });
    }

    void equalityAndHashSeeEveryField() {
        eachKey([](const RecordKind &kind, const QString &key) {
            const QJsonObject example = kind.example;
            const QJsonValue value = example.value(key);
            QJsonObject other = example;
            if (kind.optionalKeys.contains(key))
                other.remove(key);
            else if (isText(value, key))
                other.insert(key, value.toString() + 'x');
            else if (value.isString())
                other.insert(key, key == "deliveryStatus"        ? "failed"
                                  : key == "status"              ? "online"
                                  : kind.name == "MessengerChat" ? "direct"
                                                                 : "file");
            else
                other.insert(key, value.isBool()     ? QJsonValue(!value.toBool())
                                  : value.isDouble() ? QJsonValue(17)
                                  : value.isArray()  ? QJsonValue(QJsonArray())
                                                     : QJsonValue(QJsonObject()));
            QVERIFY(other != example);
            QVERIFY(!kind.equal(example, other));
            QVERIFY(kind.hash(example) != kind.hash(other));
        });
    }

    void rawValuesAreExact() {
        // In capitals, nothing, with blanks, qualified, two, a number, of another set, a character of nothing
        // and more.
        for (const QString raw : {"Image", "", " image", "image ", "AttachmentType::image",
                                  "orvane::AttachmentType::image", "image|audio", "0", "aiRequest"}) {
            QVERIFY2(!fromRawText<AttachmentType>(raw), qPrintable(raw));
            QVERIFY2(!derived::fromJson<Attachment>({{"type", raw}}), qPrintable(raw));
        }
        QVERIFY(!fromRawText<AttachmentType>(u"image\0x"_s));
    }

    void everyRawValueIsKnown() {
        const auto known = []<typename E>(E last, const char *texts) {
            const QStringList names = QString(texts).split(' ');
            QCOMPARE(int(names.size()), int(last) + 1);
            for (int value = 0; value <= int(last); ++value) {
                QCOMPARE(rawText(E(value)), names.at(value));
                QCOMPARE(fromRawText<E>(names.at(value)), E(value));
            }
        };
        known(MessageType::poll,
              "text image voice video file sticker location system aiRequest aiResponse poll");
        known(DeliveryStatus::failed, "sending sent delivered read failed");
        known(AttachmentType::sticker, "image audio video file sticker");
        known(ChatType::channel, "direct group channel");
        known(UserStatus::typing, "online offline away typing");
    }

    void datesCountFrom2001() {
        const auto text = [](const QDateTime &time) { return time.toUTC().toString(Qt::ISODateWithMs); };
        const auto read = [](double seconds) { return *derived::Codec<QDateTime>::read(seconds); };
        QCOMPARE(text(read(0)), "2001-01-01T00:00:00.000Z");
        QCOMPARE(text(read(725846400.5)), "2024-01-02T00:00:00.500Z");
    }

    void votersAreASet() {
        const auto option = [](const char *voters) {
            return *derived::fromJson<PollOption>(
                {{"id", "o"}, {"text", "t"}, {"voters", json::parse(voters)}});
        };
        QCOMPARE(option(R"(["b","a","b"])").voters, (QSet<QString>{"a", "b"}));
        QVERIFY(option(R"(["b","a","b"])") == option(R"(["a","b"])"));
        QCOMPARE(qHash(option(R"(["b","a"])"), 0), qHash(option(R"(["a","b"])"), 0));
    }

    void readingIsAFixedPointForUrls() {
        for (const char *url : {"https://example.org/a%2Fb%20c?x=%26&y#z", "HTTPS://EXAMPLE.org:443/../a",
                                "file:///home/a%20b/%D0%B6.m4a", "relative/path",
                                "https://example.org/?a#b#c", "data:text/plain,a%0Ab"}) {
            IN_ROW(url);
            const auto once = derived::Codec<QUrl>::read(url);
            QVERIFY(once);
            const auto twice = derived::Codec<QUrl>::read(derived::Codec<QUrl>::write(*once));
            QCOMPARE(twice, once);
            QCOMPARE(derived::Codec<QUrl>::write(*twice), derived::Codec<QUrl>::write(*once));
        }
        for (const char *url : {"https://example.org/a b", "https://example.org/%zz", "http://[::1",
                                "https://example.org:99999/", ""})
            QVERIFY2(!derived::Codec<QUrl>::read(url), url);
    }

    void screensSeeRawTextsAndUndefined() {
        MessengerMessage message;
        message.type = MessageType::aiResponse;
        message.ttl = 0.5;
        const QMetaObject &meta = MessengerMessage::staticMetaObject;
        const auto seen = [&](const char *name) {
            return meta.property(meta.indexOfProperty(name)).readOnGadget(&message);
        };
        QCOMPARE(seen("type"), QVariant("aiResponse"));
        QCOMPARE(seen("ttl"), QVariant(0.5));
        QVERIFY(!seen("poll").isValid());
        QVERIFY(seen("reactions").canConvert<QVariantList>());
    }
};

QTEST_GUILESS_MAIN(TestDerivedJson)
#include "tst_derived_json.moc"
