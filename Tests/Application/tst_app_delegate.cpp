// SPDX-License-Identifier: MIT
#include "Application/AppDelegate.h"
#include "Support/ClientParts.h"
#include "Support/TestMain.h"

using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

struct Push : RemoteNotifications {
    void registerForRemoteNotifications() override { ++asked; }
    int asked = 0;
};

} // namespace

class TestAppDelegate : public QObject {
    Q_OBJECT

public:
    // What the process prints is looked at from outside.
    static int child(const QStringList &) {
        const OwnFolders folders;
        ClientParts parts;
        parts.http.answerNext(ScriptedAnswer::of(500));
        Push push;
        AppDelegate delegate(push, parts.session, parts.api);
        Q_EMIT push.registered(QByteArray::fromHex("0aff"));
        Q_EMIT push.failed(u"no reason"_s);
        for (const char *payload : {"{\"chat_id\":\"3\"}", "{\"chat_id\":3}", "{}", "[]", "", "\xff{",
                                    "{\"text\":\"secret words\"}"})
            Q_EMIT push.received(payload);
        return QTest::qWaitFor([&] { return parts.http.requests().size() == 1; }) ? 0 : 1;
    }

private Q_SLOTS:
    void eachEventIsOneLine() {
        const ChildResult result = runChild({});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(
            result.output,
            u"🔔 Push token registered\n⚠️ Push registration failed: no reason\n📨 Push received\n"_s);
        QVERIFY2(!result.errors.contains(u"Bug"), qPrintable(result.errors));
    }

    void theTokenGoesToTheServer() {
        for (const bool signedIn : {false, true}) {
            ClientParts parts;
            if (signedIn)
                parts.signIn();
            Push push;
            AppDelegate delegate(push, parts.session, parts.api);
            delegate.applicationDidFinishLaunching();
            QCOMPARE(push.asked, 1);
            Q_EMIT push.registered(QByteArray::fromHex("0aff"));
            QTRY_COMPARE(parts.http.requests().size(), 1);
            QCOMPARE(parts.http.lastRequest().body,
                     signedIn ? R"({"device_token":"0aff","platform":"macos","user_id":7})"
                              : R"({"device_token":"0aff","platform":"macos","user_id":0})");
        }
    }
};

ORVANE_TEST_MAIN(TestAppDelegate)
#include "tst_app_delegate.moc"
