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
    static inline const QByteArray target = "/api/messenger/chats/c/messages";
    static inline const QByteArray posted = R"({"message":{}})";

    std::shared_ptr<MessengerChatView> screen;

    explicit OpenChat(const QList<QByteArray> &history = {}, const QString &user = u"7"_s,
                      ChatType type = ChatType::direct, const EndToEnd *encryption = nullptr) {
        MessengerChat chat;
        chat.id = u"c"_s;
        chat.type = type;
        chat.participants = {u"7"_s, u"9"_s};
        signIn();
        screen = std::make_shared<MessengerChatView>(chat, Contacts{{u"9"_s, person(u"9"_s, u"Ben"_s)}}, user,
                                                     chatParts(encryption));
        if (history.isEmpty())
            return;
        http.answerNext(ScriptedAnswer::of(200, answer(history)));
        load();
    }

    static MessengerUser person(const QString &id, const QString &name) {
        MessengerUser user;
        user.id = id;
        user.displayName = name;
        return user;
    }
    static QByteArray record(const QByteArray &id, const QByteArray &sender, const QByteArray &text = "hi",
                             const QByteArray &time = "10") {
        return R"({"id":")" + id + R"(","sender_id":")" + sender + R"(","content":")" + text +
               R"(","created_at":)" + time + "}";
    }
    static QByteArray answer(const QList<QByteArray> &records) {
        return R"({"messages":[)" + records.join(',') + "]}";
    }

    void load() {
        screen->loadMessages();
        if (!QTest::qWaitFor([this] { return !screen->isLoading; }))
            qFatal("The history does not come.");
    }
    void say(const QString &text) {
        screen->inputText = text;
        screen->sendMessage();
    }

    const MessengerMessage &message(int row) const { return screen->messages.at(row); }
    QString ids() const {
        QStringList ids;
        for (const MessengerMessage &message : screen->messages.records())
            ids.append(message.id);
        return ids.join(u' ');
    }

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
