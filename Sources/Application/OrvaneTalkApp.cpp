#include "Application/OrvaneTalkApp.h"

#include "Base/MakeScreen.h"
#include "Encryption/CryptoSetup.h"
#include "Platform/UnifiedPush.h"
#include "Session/OrvaneTalkEndpoint.h"
#include "Session/OrvaneTalkFeatureFlags.h"

#include <algorithm>

namespace orvane {

namespace {

const auto listWidthKey = QStringLiteral("window/list_width");

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
    switchRoot();
    m_switch = m_session.isLoggedIn.addNotifier([this] { switchRoot(); });
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
}

void OrvaneTalkApp::switchRoot() {
    // Whatever goes away lives until everybody has been told.
    const std::shared_ptr<AuthView> closingForm = std::move(m_auth);
    const std::shared_ptr<MessengerChatListView> closingList = std::move(m_chatList);
    if (m_session.isLoggedIn)
        m_chatList = makeScreen<MessengerChatListView>(
            MessengerChatListView::Parts{m_session, MessengerAPI::shared(), MessengerWebSocket::shared(),
                                         &ChatNotificationBridge::shared, encryption()});
    else
        m_auth = makeScreen<AuthView>(m_session, MessengerAPI::shared(), OrvaneTalkEndpoint::baseURL());
    Q_EMIT rootChanged();
    if (m_chatList)
        setupCryptoAndPreKeys();
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
