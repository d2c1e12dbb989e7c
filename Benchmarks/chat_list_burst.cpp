// SPDX-License-Identifier: MIT
#include "ManyChats.h"
#include "OffscreenScene.h"

#include <QElapsedTimer>
#include <QQmlEngine>
#include <QQuickView>
#include <QThread>
#include <QWebSocket>
#include <QWebSocketServer>

#include <algorithm>
#include <cstdio>

// Whether the window goes on painting while a server sends as fast as it can.
using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

constexpr int chats = 10'000;
constexpr int burst = 50'000;

/// On a thread of its own, as a server is a process of its own.
class FloodingServer {
public:
    FloodingServer() {
        m_thread.start();
        m_server.moveToThread(&m_thread);
        QMetaObject::invokeMethod(
            &m_server, [this] { listen(); }, Qt::BlockingQueuedConnection);
    }
    ~FloodingServer() {
        QMetaObject::invokeMethod(
            &m_server, [this] { m_server.close(); }, Qt::BlockingQueuedConnection);
        m_thread.quit();
        m_thread.wait();
    }

    QString url() const { return u"ws://127.0.0.1:%1/ws"_s.arg(m_port); }

private:
    void listen() {
        if (!m_server.listen(QHostAddress::LocalHost))
            qFatal("The server can't listen.");
        m_port = m_server.serverPort();
        QObject::connect(&m_server, &QWebSocketServer::newConnection, &m_server, [this] {
            QWebSocket *socket = m_server.nextPendingConnection();
            socket->setParent(&m_server);
            for (int number = 0; number < burst; ++number)
                socket->sendTextMessage(frame(number));
        });
    }

    /// The chats come in no order of the list.
    static QString frame(int number) {
        const QString chatID = QString::number(qint64(number) * 7919 % chats);
        return QString::fromUtf8(json::compact(
            {{u"type"_s, u"messenger_message"_s},
             {u"chat_id"_s, chatID},
             {u"message"_s, QJsonObject{{u"id"_s, QString::number(number)},
                                        {u"chat_id"_s, chatID},
                                        {u"sender_id"_s, u"9"_s},
                                        {u"type"_s, u"text"_s},
                                        {u"content"_s, u"See you at twelve, bring the numbers."_s},
                                        {u"created_at"_s, 1'700'000'000.25 + number}}}}));
    }

    QThread m_thread;
    QWebSocketServer m_server{u"flood"_s, QWebSocketServer::NonSecureMode};
    quint16 m_port = 0;
};

struct Painting {
    double total = 0;
    double longestPause = 0;
    int frames = 0;
};

/// Follows the frames of the window until `done` holds. Milliseconds.
template <typename Done>
Painting watch(QQuickView &view, Done done) {
    QElapsedTimer clock;
    clock.start();
    Painting seen;
    double before = 0;
    const auto now = [&clock] { return double(clock.nsecsElapsed()) / 1e6; };
    const auto painted = QObject::connect(&view, &QQuickWindow::frameSwapped, &view, [&] {
        seen.longestPause = std::max(seen.longestPause, now() - before);
        before = now();
        ++seen.frames;
    });
    while (!done(seen)) {
        view.update();
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    QObject::disconnect(painted);
    seen.total = now();
    seen.longestPause = std::max(seen.longestPause, seen.total - before);
    return seen;
}

} // namespace

int main(int argc, char **argv) {
    const benchmarks::OffscreenApplication application(argc, argv);
    benchmarks::ManyChats desk(chats);
    QQuickView view;
    view.engine()->addImportPath(u"qrc:/"_s);
    view.engine()->addImageProvider(u"symbol"_s, new SymbolImages);
    view.setInitialProperties({{u"screen"_s, QVariant::fromValue(&desk.list())}});
    view.setResizeMode(QQuickView::SizeRootObjectToView);
    view.resize(900, 650);
    view.setSource(QUrl(u"qrc:/OrvaneTalk/ChatList/ChatListScreen.qml"_s));
    view.show();
    desk.awaitChats();

    const Painting still = watch(view, [](const Painting &seen) { return seen.frames == 120; });
    FloodingServer server;
    MessengerWebSocket socket(server.url(), {});
    int events = 0;
    QObject::connect(&socket, &MessengerWebSocket::events, &view, [&](const WSEvent &event) {
        Q_EMIT desk.socket().events(event);
        ++events;
    });
    socket.connect(u"t0k"_s);
    watch(view, [&](const Painting &) { return events > 0; });
    const Painting flooded = watch(view, [&](const Painting &) { return events == burst; });
    std::printf("50,000 events in %.0f ms: %d frames, the longest pause %.1f ms\n", flooded.total,
                flooded.frames, flooded.longestPause);
    std::printf("%-44s %12.1f us %12.1f us   ratio %.2f\n", "a frame in the burst / with nothing to do",
                1000 * flooded.total / flooded.frames, 1000 * still.total / still.frames,
                flooded.total / flooded.frames / (still.total / still.frames));
    return 0;
}
