// SPDX-License-Identifier: MIT
#include "Model/MessengerMock.h"
#include "Model/OrvaneTheme.h"

#include <QTest>

using namespace Qt::StringLiterals;

using namespace orvane;

class TestConstants : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void themesComeInOrderWithTheirColours_data();
    void themesComeInOrderWithTheirColours();
    void unknownThemesAreNone_data();
    void unknownThemesAreNone();
    void sampleChatsAreTheFourOfTheTable_data();
    void sampleChatsAreTheFourOfTheTable();
    void samplePeopleAreFixed();
};

void TestConstants::themesComeInOrderWithTheirColours_data() {
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("rawValue");
    QTest::addColumn<ThemeColour>("background");
    QTest::addColumn<bool>("light");
    QTest::newRow("orvane") << 0 << u"OrvaneTalk"_s << ThemeColour{0.05, 0.07, 0.06} << false;
    QTest::newRow("midnight") << 1 << u"Midnight"_s << ThemeColour{0.08, 0.08, 0.15} << false;
    QTest::newRow("dracula") << 2 << u"Dracula"_s << ThemeColour{0.16, 0.16, 0.21} << false;
    QTest::newRow("nous") << 3 << u"Nous"_s << ThemeColour{0.97, 0.97, 0.98} << true;
}

void TestConstants::themesComeInOrderWithTheirColours() {
    QFETCH(int, index);
    QFETCH(QString, rawValue);
    QFETCH(ThemeColour, background);
    QCOMPARE(allThemes().size(), 4);
    const OrvaneTheme theme = allThemes().at(index);
    QCOMPARE(orvane::rawValue(theme), rawValue);
    QCOMPARE(themeFromRawValue(rawValue), theme);
    QVERIFY(orvane::background(theme) == background);
    QTEST(isLight(theme), "light");
}

void TestConstants::unknownThemesAreNone_data() {
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << QString();
    QTest::newRow("lower case") << u"midnight"_s;
    QTest::newRow("case name") << u"orvane"_s;
    QTest::newRow("spaces") << u"Nous "_s;
}

void TestConstants::unknownThemesAreNone() {
    QFETCH(QString, text);
    QVERIFY(!themeFromRawValue(text));
}

void TestConstants::sampleChatsAreTheFourOfTheTable_data() {
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("summary");
    QTest::addColumn<qint64>("age");
    const auto row = [](int index, const char *summary, qint64 age) {
        QTest::newRow(summary) << index << QString::fromLatin1(summary) << age;
    };
    row(0, "c1 direct titled 2 u1 text Docs ready", 120);
    row(1, "c2 group titled 0 u4 text Deploy done", 600);
    row(2, "c3 direct untitled 1 ai_orvanetalk aiResponse Analyzed your chats today.", 60);
    row(3, "c4 direct untitled 0 me text Text me when back", 7200);
}

void TestConstants::sampleChatsAreTheFourOfTheTable() {
    QFETCH(int, row);
    QCOMPARE(MessengerMock::sampleChats().size(), 4);
    const MessengerChat &chat = MessengerMock::sampleChats().at(row);
    const MessengerMessage &last = chat.lastMessage.value();
    const QStringList parts{chat.id,
                            rawText(chat.type),
                            chat.title ? u"titled"_s : u"untitled"_s,
                            QString::number(chat.unreadCount),
                            last.senderID,
                            rawText(last.type),
                            last.content};
    QTEST(parts.join(u' '), "summary");
    QTEST(last.timestamp.secsTo(chat.createdAt), "age");
    QCOMPARE(last.chatID, chat.id);
    QCOMPARE(last.deliveryStatus, DeliveryStatus::sent);
    QVERIFY(chat.aiEnabled && !chat.federated && !chat.zkMode && !chat.roomId);
    QVERIFY(chat.settings == MessengerChatSettings());
    QCOMPARE(chat.updatedAt, chat.createdAt);
    QVERIFY(qAbs(chat.createdAt.secsTo(QDateTime::currentDateTime())) < 60);
}

void TestConstants::samplePeopleAreFixed() {
    MessengerUser me;
    me.id = u"me"_s;
    me.displayName = u"Alex"_s;
    me.status = UserStatus::offline;
    QVERIFY(MessengerMock::currentUser() == me);
    MessengerUser assistant;
    assistant.id = u"ai_orvanetalk"_s;
    assistant.displayName = u"Orvane AI"_s;
    assistant.status = UserStatus::offline;
    assistant.isAI = true;
    QVERIFY(MessengerMock::aiAssistant() == assistant);
}

QTEST_GUILESS_MAIN(TestConstants)

#include "tst_constants.moc"
