// SPDX-License-Identifier: MIT
#include "Conversation/Chat/ChatNotificationBridge.h"
#include "Support/RecordingNotifications.h"
#include "Support/TestMain.h"

using namespace orvane;
using namespace Qt::StringLiterals;

class TestNotificationBridge : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void onlyTheOpenChatIsSilent() {
        const auto notes = std::make_shared<RecordingNotifications::Notes>();
        double now = 1'700'000'000;
        ChatNotificationBridge bridge(std::make_unique<RecordingNotifications>(notes),
                                      [&now] { return now += 0.25; });
        QCOMPARE(notes->authorizations, 1);
        bridge.notify(u"3"_s, u"Team"_s, u"Ben"_s, u"hi"_s);
        bridge.activeChatID = u"3"_s;
        bridge.notify(u"3"_s, u"Team"_s, u"Ben"_s, u"unseen"_s);
        bridge.notify(u"03"_s, u"Team"_s, u"Ben"_s, u"ho"_s);
        bridge.activeChatID = QString();
        bridge.notify(u"3"_s, u"Team"_s, u"Ben"_s, u"hi"_s);
        bridge.notify(u"3"_s, u"Team"_s, u"Ben"_s, u"hi"_s);
        QStringList identifiers;
        for (const auto &one : notes->added)
            identifiers.append(one.identifier);
        QCOMPARE(identifiers, (QStringList{u"msg_3_1700000000.25"_s, u"msg_03_1700000000.5"_s,
                                           u"msg_3_1700000000.75"_s, u"msg_3_1700000001.0"_s}));
        const NotificationContent &content = notes->added.first().content;
        QCOMPARE(content.title, u"Ben"_s);
        QCOMPARE(content.subtitle, u"Team"_s);
        QCOMPARE(content.body, u"hi"_s);
        QCOMPARE(content.userInfo, (QJsonObject{{u"chat_id"_s, u"3"_s}}));
    }
};

ORVANE_TEST_MAIN(TestNotificationBridge)
#include "tst_notification_bridge.moc"
