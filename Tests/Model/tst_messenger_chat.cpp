// SPDX-License-Identifier: MIT
#include "Model/MessengerChat.h"

#include <QTest>

using namespace Qt::StringLiterals;

using namespace orvane;

class TestMessengerChat : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void displayNameTakesTheFirstRuleThatApplies_data();
    void displayNameTakesTheFirstRuleThatApplies();
    void aNameThatShowsNothingIsAChat_data();
    void aNameThatShowsNothingIsAChat();
    void aPersonHasOneColour_data();
    void aPersonHasOneColour();
    void peerIsTheFirstOtherParticipant_data();
    void peerIsTheFirstOtherParticipant();
};

void TestMessengerChat::displayNameTakesTheFirstRuleThatApplies_data() {
    QTest::addColumn<ChatType>("type");
    QTest::addColumn<QString>("flags");
    /// A null text stands for an absent title.
    QTest::addColumn<QString>("title");
    QTest::addColumn<QStringList>("participants");
    QTest::addColumn<QString>("name");
    const QString absent;
    const QString empty = u""_s;
    const QString title = u"T"_s;
    const QStringList withAnna{u"1"_s, u"7"_s};
    const auto row = [](const char *name, ChatType type, const char *flags, const QString &chatTitle,
                        const QStringList &participants, const char *expected) {
        QTest::newRow(name) << type << QString::fromLatin1(flags) << chatTitle << participants
                            << QString::fromUtf8(expected);
    };
    using enum ChatType;
    row("federated with a title", group, "federated", title, withAnna, "🌐 T");
    row("federated wins over secret", group, "federated zk", title, withAnna, "🌐 T");
    row("federated with an empty title is secret", direct, "federated zk", empty, withAnna, "🔒 ");
    row("federated with an empty title", direct, "federated", empty, withAnna, "");
    row("federated without a title", direct, "federated", absent, withAnna, "Anna");
    row("federated group without a title", group, "federated", absent, withAnna, "G 2");
    row("secret with a title", direct, "zk", title, withAnna, "🔒 T");
    row("secret without a title", direct, "zk", absent, withAnna, "🔒 ZK Group");
    row("title", direct, "", title, withAnna, "T");
    row("empty title", group, "", empty, withAnna, "");
    row("direct with a contact", direct, "", absent, withAnna, "Anna");
    row("direct with a stranger", direct, "", absent, {u"1"_s, u"9"_s}, "?");
    row("direct with a stranger first", direct, "", absent, {u"9"_s, u"7"_s}, "?");
    row("direct with oneself", direct, "", absent, {u"1"_s, u"1"_s}, "?");
    row("direct with nobody", direct, "", absent, {}, "?");
    row("group", group, "", absent, withAnna, "G 2");
    row("empty channel", channel, "", absent, {}, "G 0");
}

void TestMessengerChat::displayNameTakesTheFirstRuleThatApplies() {
    QFETCH(ChatType, type);
    QFETCH(QString, flags);
    QFETCH(QString, title);
    QFETCH(QStringList, participants);
    MessengerUser anna;
    anna.displayName = u"Anna"_s;
    MessengerUser myself;
    myself.displayName = u"Myself"_s;
    const Contacts contacts{{u"7"_s, anna}, {u"1"_s, myself}};
    MessengerChat chat;
    chat.type = type;
    chat.federated = flags.contains("federated"_L1);
    chat.zkMode = flags.contains("zk"_L1);
    if (!title.isNull())
        chat.title = title;
    chat.participants = participants;
    QTEST(chat.displayName(u"1"_s, contacts), "name");
}

void TestMessengerChat::aNameThatShowsNothingIsAChat_data() {
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("name");
    QTest::newRow("empty") << ""
                           << "Chat";
    QTest::newRow("blanks") << " \t\n\u00a0\u3000"
                            << "Chat";
    QTest::newRow("marks that draw nothing") << "\u200b\u202e\u2066"
                                             << "Chat";
    QTest::newRow("a letter among them") << "\u200b a"
                                         << "\u200b a";
    QTest::newRow("beyond 16 bits") << "😀"
                                    << "😀";
}

void TestMessengerChat::aNameThatShowsNothingIsAChat() {
    QFETCH(QString, title);
    MessengerChat chat;
    chat.title = title;
    QTEST(chat.visibleName(u"1"_s, {}), "name");
    // A person without a name is no better off.
    chat.title = std::nullopt;
    chat.participants = {u"7"_s};
    MessengerUser other;
    other.displayName = title;
    QTEST(chat.visibleName(u"1"_s, {{u"7"_s, other}}), "name");
}

void TestMessengerChat::aPersonHasOneColour_data() {
    QTest::addColumn<ChatType>("type");
    QTest::addColumn<QStringList>("participants");
    QTest::addColumn<QString>("hueId");
    using enum ChatType;
    QTest::newRow("direct") << direct << QStringList{"1", "7"} << "7";
    QTest::newRow("the own saved chat") << direct << QStringList{"1"} << "c";
    QTest::newRow("nobody known") << direct << QStringList() << "c";
    QTest::newRow("group") << group << QStringList{"1", "7"} << "c";
    QTest::newRow("channel") << channel << QStringList() << "c";
}

void TestMessengerChat::aPersonHasOneColour() {
    QFETCH(ChatType, type);
    QFETCH(QStringList, participants);
    MessengerChat chat;
    chat.id = u"c"_s;
    chat.type = type;
    chat.participants = participants;
    QTEST(chat.hueId(u"1"_s), "hueId");
}

void TestMessengerChat::peerIsTheFirstOtherParticipant_data() {
    QTest::addColumn<QStringList>("participants");
    QTest::addColumn<QString>("peer");
    const QString me = u"1"_s;
    QTest::newRow("nobody") << QStringList() << QString();
    QTest::newRow("only me") << QStringList{me, me} << QString();
    QTest::newRow("first") << QStringList{u"2"_s, me, u"3"_s} << u"2"_s;
    QTest::newRow("later") << QStringList{me, u"01"_s, u"2"_s} << u"01"_s;
}

void TestMessengerChat::peerIsTheFirstOtherParticipant() {
    QFETCH(QStringList, participants);
    MessengerChat chat;
    chat.type = ChatType::group;
    chat.participants = participants;
    QTEST(chat.peerId(u"1"_s), "peer");
}

QTEST_GUILESS_MAIN(TestMessengerChat)

#include "tst_messenger_chat.moc"
