// SPDX-License-Identifier: MIT
#pragma once

#include "Base/FreshId.h"
#include "Conversation/Screen/MessengerChatView.h"
#include "Support/OpenChatParts.h"

#include <QTest>

namespace orvane {

using namespace Qt::StringLiterals;

/// A direct chat of user 7 with Ben, 9, whose history is given as records of the server.
struct OpenChat : OpenChatParts {
    std::shared_ptr<MessengerChatView> screen;

    explicit OpenChat(const QList<QByteArray> &history = {}, const QString &user = u"7"_s,
                      ChatType type = ChatType::direct) {
        MessengerChat chat;
        chat.id = u"c"_s;
        chat.type = type;
        chat.participants = {u"7"_s, u"9"_s};
        MessengerUser ben;
        ben.id = u"9"_s;
        ben.displayName = u"Ben"_s;
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
        return R"({"id":"%1","sender_id":"%2","content":"%3","created_at":10})"_ba.replace("%1", id)
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
        socket.send({{u"type"_s, mark}});
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
