// SPDX-License-Identifier: MIT
#include "Application/OrvaneTalkApp.h"

#include "Application/TrayImage.h"
#include "Base/MakeScreen.h"
#include "Base/NotificationCentre.h"
#include "Encryption/CryptoSetup.h"
#include "Platform/UnifiedPush.h"
#include "Platform/UserNotifications.h"
#include "Session/OrvaneTalkEndpoint.h"
#include "Session/OrvaneTalkFeatureFlags.h"

#include <QGuiApplication>
#include <QWindow>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

const auto listWidthKey = u"window/list_width"_s;

constexpr int narrowest = 260;
constexpr int usual = 320;
constexpr int widest = 420;

} // namespace

OrvaneTalkApp::OrvaneTalkApp(MessengerSession &session)
    : m_session(session)
    , m_listWidth(int(m_defaults.integer(listWidthKey))) {
    m_listWidth = m_listWidth == 0 ? usual : std::clamp(m_listWidth, narrowest, widest);
    m_saveListWidth.setSingleShot(true);
    m_saveListWidth.setInterval(300);
    connect(&m_saveListWidth, &QTimer::timeout, this,
            [this] { m_defaults.set(listWidthKey, qint64(m_listWidth)); });
    m_showBadge.setSingleShot(true);
    m_showBadge.setInterval(100);
    connect(&m_showBadge, &QTimer::timeout, this, &OrvaneTalkApp::showBadge);
    switchRoot();
    // Once whoever signs in or out is done: the new screen asks the session at once.
    connect(&m_session, &MessengerSession::isLoggedInChanged, this, &OrvaneTalkApp::switchRoot,
            Qt::QueuedConnection);
}

void OrvaneTalkApp::setListWidth(int width) {
    if (width == m_listWidth)
        return;
    m_listWidth = width;
    m_saveListWidth.start();
    Q_EMIT listWidthChanged();
}

void OrvaneTalkApp::finishLaunching() {
    m_push = std::make_unique<UnifiedPush>();
    m_delegate = std::make_unique<AppDelegate>(*m_push, m_session);
    m_delegate->applicationDidFinishLaunching();
    if (m_session.isLoggedIn)
        sendWhatWaits();
    showInDesktop();
    m_motion = std::make_unique<ReducedMotion>();
    connect(m_motion.get(), &ReducedMotion::changed, this, [this] { reducedMotion = m_motion->isWanted(); });
}

void OrvaneTalkApp::sendWhatWaits() {
    // Made, the queue drains as soon as there is a network.
    MessengerOfflineQueue::shared();
}

void OrvaneTalkApp::switchRoot() {
    // Whatever goes away lives until everybody has been told.
    const std::shared_ptr<AuthView> closingForm = std::move(m_auth);
    const std::shared_ptr<MessengerChatListView> closingList = std::move(m_chatList);
    if (m_session.isLoggedIn)
        m_chatList = makeScreen<MessengerChatListView>(
            MessengerChatListView::Parts{{.api = MessengerAPI::shared(),
                                          .socket = MessengerWebSocket::shared(),
                                          .encryption = encryption()},
                                         m_session});
    else
        m_auth = makeScreen<AuthView>(m_session, MessengerAPI::shared(), OrvaneTalkEndpoint::baseURL());
    Q_EMIT rootChanged();
    if (m_tray)
        m_showBadge.start();
    if (!m_chatList)
        return;
    connect(m_chatList.get(), &MessengerChatListView::badgeChanged, &m_showBadge, [this] {
        if (!m_showBadge.isActive())
            m_showBadge.start();
    });
    setupCryptoAndPreKeys();
    if (m_delegate)
        sendWhatWaits();
}

void OrvaneTalkApp::showInDesktop() {
    m_launcher = std::make_unique<LauncherBadge>();
    m_tray = std::make_unique<TrayIcon>(&trayImage);
    connect(m_tray.get(), &TrayIcon::hostedChanged, this, &OrvaneTalkApp::followTray);
    m_trayIsGone.setSingleShot(true);
    m_trayIsGone.setInterval(2'000);
    connect(&m_trayIsGone, &QTimer::timeout, this, [this] {
        if (std::ranges::none_of(QGuiApplication::topLevelWindows(), &QWindow::isVisible))
            Q_EMIT windowWanted();
    });
    connect(m_tray.get(), &TrayIcon::activated, this, &OrvaneTalkApp::windowWanted);
    connect(m_tray.get(), &TrayIcon::quitChosen, qApp, &QCoreApplication::quit);
    connect(&NotificationCentre::shared(), &NotificationCentre::posted, this, [this](const QString &name) {
        if (name == orvaneOpenChat)
            Q_EMIT windowWanted();
    });
    showBadge();
}

void OrvaneTalkApp::followTray() {
    QGuiApplication::setQuitOnLastWindowClosed(!m_tray->isHosted());
    if (m_tray->isHosted())
        m_trayIsGone.stop();
    else
        m_trayIsGone.start();
}

void OrvaneTalkApp::showBadge() {
    if (!m_tray)
        return;
    const qint64 count = m_chatList ? m_chatList->unreadSum() : 0;
    const QString label = m_chatList ? m_chatList->badge() : QString();
    m_launcher->show(count, label);
    m_tray->show(count, label);
}

const EndToEnd *OrvaneTalkApp::encryption() const {
    return OrvaneTalkFeatureFlags::experimentalCrypto() ? &m_engines : nullptr;
}

void OrvaneTalkApp::setupCryptoAndPreKeys() {
    CryptoSetup setup{.session = m_session, .registerForRemoteNotifications = [this] {
                          // At the start the first registration is still to come.
                          if (m_push)
                              m_push->registerForRemoteNotifications();
                      }};
    setup.setupCryptoAndPreKeys(encryption() != nullptr, this);
}

} // namespace orvane
