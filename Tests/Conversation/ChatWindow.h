// SPDX-License-Identifier: MIT
#pragma once

#include "Conversation/Screen/MessengerChatView.h"
#include "Support/OpenChatParts.h"
#include "Support/ScreenWindow.h"

namespace orvane {

using namespace Qt::StringLiterals;

/// The open chat in a window of its own, with a history that is given and has come.
struct ChatWindow : OpenChatParts {
    std::shared_ptr<MessengerChatView> screen;
    ScreenWindow view;

    explicit ChatWindow(
        const QJsonArray &history, const std::function<void(MessengerChatView &)> &prepare = [](auto &) {}) {
        MessengerChat chat;
        chat.id = u"c"_s;
        chat.type = ChatType::group;
        chat.title = u"Team"_s;
        http.answerFor("/api/messenger/chats/c/messages",
                       ScriptedAnswer::of(200, json::compact({{"messages", history}})));
        screen = std::make_shared<MessengerChatView>(chat, Contacts(), u"7"_s, chatParts());
        prepare(*screen);
        view.resize(580, 650);
        view.open(u"qrc:/OrvaneTalk/Conversation/ChatScreen.qml"_s,
                  {{"screen", QVariant::fromValue(screen.get())}, {"focus", true}});
        screen->loadMessages();
        if (!QTest::qWaitForWindowActive(&view) || !QTest::qWaitFor([this] { return !screen->isLoading; }))
            qFatal("The window does not come.");
    }

    QQuickItem *messages() const { return view.rootObject()->findChild<QQuickItem *>(u"messages"_s); }
    QQuickItem *row(int index) const {
        QQuickItem *row = nullptr;
        QMetaObject::invokeMethod(messages(), "itemAtIndex", Q_RETURN_ARG(QQuickItem *, row),
                                  Q_ARG(int, index));
        return row;
    }
    /// The end of the newest message stands at the end of the list.
    bool showsNewest() const {
        const QQuickItem *row = this->row(0);
        if (!row)
            return false;
        const double end = row->mapToItem(messages(), QPointF(0, row->height())).y();
        return end <= messages()->height() && end > messages()->height() - 32;
    }

    /// Everything that is a message's row, shown or kept for reuse.
    QList<QQuickItem *> rows() const {
        QList<QQuickItem *> rows;
        const auto *content = messages()->property("contentItem").value<QQuickItem *>();
        for (QQuickItem *item : content->childItems()) {
            if (item->metaObject()->indexOfProperty("startsRun") >= 0)
                rows.append(item);
        }
        return rows;
    }
    void add(const QString &text, const QString &sender = u"7"_s) const {
        MessengerMessage record;
        record.id = QString::number(screen->messages.count());
        record.senderID = sender;
        record.content = text;
        record.timestamp = QDateTime::currentDateTimeUtc().addSecs(-60);
        screen->messages.append(record);
    }

    void addNumbers(int count, const QString &sender = u"7"_s) const {
        for (int number = 0; number < count; ++number)
            add(QString::number(number), sender);
    }

    QQuickItem *input() const { return view.item("placeholderText", "Message..."); }
};

} // namespace orvane
