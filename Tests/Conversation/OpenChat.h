#pragma once

#include "Base/FreshId.h"
#include "Conversation/MessengerChatView.h"
#include "Support/OpenChatParts.h"

#include <QTest>

namespace orvane {

/// A direct chat of user 7 with Ben, 9, whose history is given as records of the server.
struct OpenChat : OpenChatParts {
    std::shared_ptr<MessengerChatView> screen;

    explicit OpenChat(const QList<QByteArray> &history = {}, const QString &user = QStringLiteral("7"),
                      ChatType type = ChatType::direct) {
        MessengerChat chat;
        chat.id = QStringLiteral("c");
        chat.type = type;
        chat.participants = {QStringLiteral("7"), QStringLiteral("9")};
        MessengerUser ben;
        ben.id = QStringLiteral("9");
        ben.displayName = QStringLiteral("Ben");
        signIn();
        screen = std::make_shared<MessengerChatView>(chat, Contacts{{ben.id, ben}}, user, chatParts());
        if (history.isEmpty())
            return;
        http.answerNext(ScriptedAnswer::of(200, R"({"messages":[)" + history.join(',') + "]}"));
        screen->loadMessages();
        if (!QTest::qWaitFor([this] { return !screen->isLoading; }))
            qFatal("The history does not come.");
    }

    static QByteArray record(const char *id, const char *sender, const char *text = "hi") {
        return QByteArrayLiteral(R"({"id":"%1","sender_id":"%2","content":"%3","created_at":10})")
            .replace("%1", id)
            .replace("%2", sender)
            .replace("%3", text);
    }

    const MessengerMessage &message(int row) const { return screen->messages.at(row); }

    /// The body of the last request to this path, once there is one.
    QJsonObject bodySentTo(const QByteArray &path) const {
        for (auto request = http.requests().crbegin(); request != http.requests().crend(); ++request) {
            if (request->target == path && !request->body.isEmpty())
                return json::parseObject(request->body).value();
        }
        return {};
    }

    /// The frames of one type that went out over the event socket.
    QList<QJsonObject> frames(const QString &type) {
        QList<QJsonObject> found;
        // Whatever was sent stands before this mark.
        const QString mark = freshId();
        socket.send({{QStringLiteral("type"), mark}});
        if (!QTest::qWaitFor([&] { return !events.frames(0).filter(mark).isEmpty(); }))
            qFatal("The socket is not open.");
        for (const QString &frame : events.frames(0)) {
            const QJsonObject object = json::parseObject(frame.toUtf8()).value();
            if (json::text(object, u"type") == type)
                found.append(object);
        }
        return found;
    }
};

} // namespace orvane
