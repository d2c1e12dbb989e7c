// SPDX-License-Identifier: MIT
#include "Base/Json.h"
#include "Model/ChatFolder.h"
#include "Model/PreKeyBundle.h"

#include <QTest>

using namespace Qt::StringLiterals;

using namespace orvane;

class TestWireRecords : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void foldersFillWhatIsMissing_data();
    void foldersFillWhatIsMissing();
    void bundlesTakeStandardBase64Only_data();
    void bundlesTakeStandardBase64Only();
    void bundlesNeedTheirThreeKeys_data();
    void bundlesNeedTheirThreeKeys();
};

void TestWireRecords::foldersFillWhatIsMissing_data() {
    QTest::addColumn<QByteArray>("json");
    /// Empty for a folder that is refused, else name, icon and chats.
    QTest::addColumn<QString>("folder");
    const auto row = [](const char *json, const char *folder) {
        QTest::newRow(json) << QByteArray(json) << QString::fromUtf8(folder);
    };
    row("{}", "");
    row(R"({"id":7})", "");
    row(R"({"id":null,"name":"a"})", "");
    row(R"({"id":"f"})", "Folder 📁 ()");
    row(R"({"id":"","name":"","icon":""})", "  ()");
    row(R"({"id":"f","name":7,"icon":true,"chat_ids":"1"})", "Folder 📁 ()");
    row(R"({"id":"f","name":"Работа","icon":"🏠","chat_ids":["2","1","2"]})", "Работа 🏠 (2,1,2)");
    row(R"({"id":"f","chat_ids":[1,2.0]})", "Folder 📁 (1,2)");
    row(R"({"id":"f","chat_ids":[1,"2"]})", "Folder 📁 ()");
    row(R"({"id":"f","chat_ids":[1,2.5]})", "Folder 📁 ()");
    row(R"({"id":"f","chat_ids":[null]})", "Folder 📁 ()");
    row(R"({"id":"f","chat_ids":{"0":1}})", "Folder 📁 ()");
    row(R"({"id":"f","chatIds":["1"]})", "Folder 📁 ()");
}

void TestWireRecords::foldersFillWhatIsMissing() {
    QFETCH(QByteArray, json);
    const auto folder = ChatFolder::fromAPI(json::parseObject(json).value());
    QTEST(folder ? u"%1 %2 (%3)"_s.arg(folder->name, folder->icon, folder->chatIds.join(u',')) : QString(),
          "folder");
}

void TestWireRecords::bundlesTakeStandardBase64Only_data() {
    QTest::addColumn<QJsonValue>("value");
    /// Null for a value that is refused.
    QTest::addColumn<QByteArray>("bytes");
    const auto row = [](const char *name, const QJsonValue &value, const QByteArray &bytes) {
        QTest::newRow(name) << value << bytes;
    };
    const auto text = [](const char *latin1) { return QJsonValue(QString::fromLatin1(latin1)); };
    const QByteArray refused;
    row("three bytes", text("AAEC"), QByteArray("\0\1\2", 3));
    row("two bytes", text("AAE="), QByteArray("\0\1", 2));
    row("one byte", text("/w=="), "\xff");
    row("nothing", text(""), "");
    row("no padding", text("AAE"), refused);
    row("too little padding", text("AA="), refused);
    row("too much padding", text("AAEC===="), refused);
    row("padding in the middle", text("AA==AAEC"), refused);
    row("padding in front", text("=AAE"), refused);
    row("padding alone", text("===="), refused);
    row("the alphabet of URLs", text("_-_-"), refused);
    row("line end", text("AAEC\nAAEC"), refused);
    row("spaces", text("AA C"), refused);
    row("foreign letters", u"ЖЖЖЖ"_s, refused);
    row("a character of nothing", QString(QChar(u'\0')) + u"AEC"_s, refused);
    row("number", 1234, refused);
    row("null", QJsonValue(), refused);
    row("list", QJsonArray{0, 1, 2}, refused);
}

void TestWireRecords::bundlesTakeStandardBase64Only() {
    QFETCH(QJsonValue, value);
    QFETCH(QByteArray, bytes);
    const QStringList keys{u"identity_key"_s, u"signed_pre_key"_s, u"signed_pre_key_signature"_s};
    const QString oneTimeKey = u"one_time_pre_key"_s;
    QJsonObject good{{oneTimeKey, value}};
    for (const QString &key : keys)
        good.insert(key, u"a2V5"_s);

    const auto bundle = PreKeyBundle::from(good);
    QVERIFY(bundle);
    QCOMPARE(bundle->oneTimePreKey, bytes.isNull() ? std::nullopt : std::optional(bytes));
    for (const QString &key : keys) {
        QJsonObject changed = good;
        changed.insert(key, value);
        QCOMPARE(PreKeyBundle::from(changed).has_value(), !bytes.isNull());
    }
}

void TestWireRecords::bundlesNeedTheirThreeKeys_data() {
    QTest::addColumn<QString>("missing");
    QTest::newRow("identity") << u"identity_key"_s;
    QTest::newRow("signed") << u"signed_pre_key"_s;
    QTest::newRow("signature") << u"signed_pre_key_signature"_s;
}

void TestWireRecords::bundlesNeedTheirThreeKeys() {
    QFETCH(QString, missing);
    QJsonObject object = json::parseObject(R"({"identity_key":"AQ==","signed_pre_key":"Ag==",)"
                                           R"("signed_pre_key_signature":"Aw=="})")
                             .value();
    QVERIFY(PreKeyBundle::from(object) == (PreKeyBundle{"\1", "\2", "\3", std::nullopt}));
    object.remove(missing);
    QVERIFY(!PreKeyBundle::from(object));
}

QTEST_GUILESS_MAIN(TestWireRecords)

#include "tst_wire_records.moc"
