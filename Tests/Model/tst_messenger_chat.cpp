// SPDX-License-Identifier: MIT
#include "Model/MessengerMock.h"
#include "Model/OrvaneTheme.h"
#include "Support/InRow.h"

using namespace orvane;

namespace {

const QString me = "1";

MessengerChat chatOf(const QStringList &participants, ChatType type = ChatType::direct) {
    MessengerChat chat;
    chat.id = "c";
    chat.type = type;
    chat.participants = participants;
    return chat;
}

MessengerUser named(const QString &name) {
    MessengerUser user;
    user.displayName = name;
    return user;
}

} // namespace

class TestMessengerChat : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void displayNameTakesTheFirstRuleThatApplies() {
        const auto check = [](MessengerChat chat, const QString &flags, const std::optional<QString> &title,
                              const QString &name) {
            IN_ROW(name.toUtf8() + ' ' + flags.toUtf8());
            chat.federated = flags.contains("federated");
            chat.zkMode = flags.contains("zk");
            chat.title = title;
            QCOMPARE(chat.displayName(me, {{"7", named("Anna")}, {me, named("Myself")}}), name);
        };
        const MessengerChat direct = chatOf({me, "7"});
        const MessengerChat group = chatOf({me, "7"}, ChatType::group);
        check(group, "federated", "T", "🌐 T");
        check(group, "federated zk", "T", "🌐 T");
        check(direct, "federated zk", "", "🔒 ");
        check(direct, "federated", "", "");
        check(direct, "federated", {}, "Anna");
        check(group, "federated", {}, "G 2");
        check(direct, "zk", "T", "🔒 T");
        check(direct, "zk", {}, "🔒 ZK Group");
        check(direct, "", "T", "T");
        check(group, "", "", "");
        check(direct, "", {}, "Anna");
        // A stranger, one before an acquaintance, oneself alone, nobody.
        for (const QStringList &unknown :
             {QStringList{me, "9"}, QStringList{"9", "7"}, QStringList{me, me}, QStringList()})
            check(chatOf(unknown), "", {}, "?");
        check(group, "", {}, "G 2");
        check(chatOf({}, ChatType::channel), "", {}, "G 0");
    }

    void aNameThatShowsNothingIsAChat() {
        const auto check = [](const QString &title, const QString &name) {
            IN_ROW(name.toUtf8());
            MessengerChat chat = chatOf({"7"});
            chat.title = title;
            QCOMPARE(chat.visibleName(me, {}), name);
            // A person without a name is no better off.
            QCOMPARE(chatOf({"7"}).visibleName(me, {{"7", named(title)}}), name);
        };
        for (const char *nothing : {"", " \t\n\u00a0\u3000", "\u200b\u202e\u2066"})
            check(nothing, "Chat");
        check("\u200b a", "\u200b a");
        check("😀", "😀");
    }

    void aPersonHasOneColour() {
        QCOMPARE(chatOf({me, "7"}).hueId(me), "7");
        // The own saved chat, nobody known, and no direct chats.
        for (const MessengerChat &chat :
             {chatOf({me}), chatOf({}), chatOf({me, "7"}, ChatType::group), chatOf({}, ChatType::channel)})
            QCOMPARE(chat.hueId(me), "c");
    }

    void peerIsTheFirstOtherParticipant() {
        QCOMPARE(chatOf({}, ChatType::group).peerId(me), QString());
        QCOMPARE(chatOf({me, me}).peerId(me), QString());
        QCOMPARE(chatOf({"2", me, "3"}).peerId(me), "2");
        QCOMPARE(chatOf({me, "01", "2"}, ChatType::group).peerId(me), "01");
    }

    void theSampleChatsAreWhole() {
        for (const MessengerChat &chat : MessengerMock::sampleChats()) {
            IN_ROW(chat.id.toUtf8());
            QCOMPARE(chat.lastMessage->chatID, chat.id);
            QVERIFY(chat.lastMessage->timestamp < chat.createdAt);
            QCOMPARE(chat.updatedAt, chat.createdAt);
            QVERIFY(qAbs(chat.createdAt.secsTo(QDateTime::currentDateTime())) < 60);
        }
    }

    void themesHaveExactNames() {
        for (const OrvaneTheme theme : allThemes())
            QCOMPARE(themeFromRawValue(rawValue(theme)), theme);
        for (const char *text : {"", "midnight", "orvane", "Nous "})
            QVERIFY2(!themeFromRawValue(text), text);
    }
};

QTEST_GUILESS_MAIN(TestMessengerChat)
#include "tst_messenger_chat.moc"
