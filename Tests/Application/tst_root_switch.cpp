// SPDX-License-Identifier: MIT
#include "Application/OrvaneTalkApp.h"
#include "Support/RecordingSocketServer.h"
#include "Support/ScriptedHttpServer.h"
#include "Support/TestMain.h"

using namespace Qt::StringLiterals;

using namespace orvane;

/// The program's own root over the program's own session, without its window.
class TestRootSwitch : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theFirstSyncAfterASignInBeginsWhereTheAnswerSays();
};

void TestRootSwitch::theFirstSyncAfterASignInBeginsWhereTheAnswerSays() {
    ScriptedHttpServer http;
    const RecordingSocketServer events;
    qputenv("ORVANETALK_API_BASE", http.base().toUtf8());
    qputenv("ORVANETALK_WS_URL", events.url().toUtf8());
    OrvaneTalkApp app;
    QVERIFY(app.auth() && !app.chatList());
    // As the window does.
    connect(&app, &OrvaneTalkApp::rootChanged, this, [&app] {
        if (app.chatList())
            app.chatList()->appear();
    });
    http.answerFor(
        "/api/auth/login",
        ScriptedAnswer::of(200, R"({"token":"t","user":{"id":7,"username":"anna"},"sync_cursor":41})"));
    app.auth()->username = u"anna"_s;
    app.auth()->password = u"p"_s;
    app.auth()->submit();
    const auto syncs = [&http] {
        QList<QByteArray> found;
        for (const RecordedRequest &request : http.requests()) {
            if (request.target.contains("/sync"))
                found.append(request.target);
        }
        return found;
    };
    QTRY_VERIFY(!syncs().isEmpty());
    QVERIFY2(syncs().first().endsWith("since=41"), syncs().first().constData());
    QVERIFY(!app.auth());

    MessengerSession::shared().logout();
    QTRY_VERIFY(app.auth() && !app.chatList());
}

ORVANE_TEST_MAIN(TestRootSwitch)
#include "tst_root_switch.moc"
