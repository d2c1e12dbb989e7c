// SPDX-License-Identifier: MIT
#pragma once

#include "Model/MessengerMessage.h"

#include <QCoroTask>

#include <QString>

#include <memory>

namespace orvane {

class MessengerChatView;

/// What a person does to one message. Pins and stars change at once and change back when the server refuses;
/// edits, deletions and reactions wait for the server. Failures are logged, never shown. Main thread.
class MessageActions {
public:
    explicit MessageActions(MessengerChatView &screen)
        : m_screen(screen) {}

    void copy(const MessengerMessage &message);
    /// Opens the dialog with the message's text.
    void edit(const MessengerMessage &message);
    /// Closes the dialog; a text of nothing but white space changes nothing.
    void saveEdit();
    void performDelete(const MessengerMessage &message);
    void pinUnpin(const MessengerMessage &message);
    void toggleStar(const MessengerMessage &message);
    void react(const MessengerMessage &message, const QString &emoji);
    /// Into Russian; one message at a time.
    void translate(const MessengerMessage &message);

private:
    using Screen = std::shared_ptr<MessengerChatView>;

    static QCoro::Task<void> performEdit(Screen screen, QString messageID, QString newContent);
    static QCoro::Task<void> deleteAtServer(Screen screen, QString messageID);
    static QCoro::Task<void> pinAtServer(Screen screen, QString messageID, bool pin);
    static QCoro::Task<void> starAtServer(Screen screen, QString messageID, bool star);
    static QCoro::Task<void> reactAtServer(Screen screen, QString messageID, QString emoji);
    static QCoro::Task<void> translateAtServer(Screen screen, QString messageID);

    void setPinned(const QString &messageID, bool pinned);

    MessengerChatView &m_screen;
};

} // namespace orvane
