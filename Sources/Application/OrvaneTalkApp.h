// SPDX-License-Identifier: MIT
#pragma once

#include "Application/AppDelegate.h"
#include "Application/AuthView.h"
#include "Base/Observable.h"
#include "ChatList/Screen/MessengerChatListView.h"
#include "Encryption/EndToEnd.h"
#include "Platform/LauncherBadge.h"
#include "Platform/ReducedMotion.h"
#include "Platform/TrayIcon.h"

#include <QTimer>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace orvane {

/// The root of the program: it shows the sign-in form or the chat list, as the session says, and makes each
/// anew whenever the session switches. Main thread.
class OrvaneTalkApp : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the program's entry.")
    /// Exactly one of these two is not null.
    Q_PROPERTY(orvane::AuthView *auth READ auth NOTIFY rootChanged)
    Q_PROPERTY(orvane::MessengerChatListView *chatList READ chatList NOTIFY rootChanged)
    /// Logical pixels; remembered over restarts.
    Q_PROPERTY(int listWidth READ listWidth WRITE setListWidth NOTIFY listWidthChanged)

    /// As the desktop says, once it was asked.
    OBSERVABLE(bool, reducedMotion)

public:
    explicit OrvaneTalkApp(MessengerSession &session = MessengerSession::shared());

    AuthView *auth() const { return m_auth.get(); }
    MessengerChatListView *chatList() const { return m_chatList.get(); }
    int listWidth() const { return m_listWidth; }
    void setListWidth(int width);

    /// What can wait until the first frame is there. Once.
    void finishLaunching();

Q_SIGNALS:
    void rootChanged();
    void listWidthChanged();
    /// The window is to be shown, in front.
    void windowWanted();

private:
    void switchRoot();
    void setupCryptoAndPreKeys();
    /// The messages of earlier that could not go out.
    static void sendWhatWaits();
    void showInDesktop();
    void followTray();
    void showBadge();
    /// Null where the end-to-end layer is off.
    const EndToEnd *encryption() const;

    MessengerSession &m_session;
    UserDefaults m_defaults;
    EndToEnd m_engines;
    std::unique_ptr<RemoteNotifications> m_push;
    std::unique_ptr<AppDelegate> m_delegate;
    std::unique_ptr<ReducedMotion> m_motion;
    std::unique_ptr<LauncherBadge> m_launcher;
    std::unique_ptr<TrayIcon> m_tray;
    /// Without a tray a hidden window can't be reached. A panel that only starts anew is soon back.
    QTimer m_trayIsGone;
    /// Messages may come faster than the desktop can draw their number.
    QTimer m_showBadge;
    int m_listWidth;
    /// Dragging changes the width many times a second; the disk hears of the last one.
    QTimer m_saveListWidth;
    std::shared_ptr<AuthView> m_auth;
    std::shared_ptr<MessengerChatListView> m_chatList;
};

} // namespace orvane
