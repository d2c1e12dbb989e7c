// SPDX-License-Identifier: MIT
#pragma once

#include "Model/ChatFolder.h"
#include "Model/ContactRecord.h"
#include "Model/MessengerChat.h"
#include "Model/PreKeyBundle.h"
#include "Server/HttpTransport.h"

#include <QCoroTask>

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

namespace orvane {

/// The agents of one chat, and the roles that may be added.
struct ChatAgents {
    QList<QJsonObject> agents;
    QStringList presets;
};

/// The marketplace's skills, and the categories they stand in.
struct SkillCatalogue {
    QList<QJsonObject> skills;
    QStringList categories;
};

/// The client of the server's REST interface. Operations fail like the primitives of HttpTransport and read
/// their answers by ResultConventions.h. User ids are decimal texts that become integers in bodies, 0 where
/// they don't parse. What goes into paths and queries goes in as given. The object outlives its operations.
/// Main thread.
class MessengerAPI : public HttpTransport {
public:
    using Objects = QList<QJsonObject>;
    using Texts = QMap<QString, QString>;

    using HttpTransport::HttpTransport;

    static MessengerAPI &shared();

    // Chats
    QCoro::Task<QList<MessengerChat>> fetchChats();
    QCoro::Task<QJsonObject> createChat(const QString &userID, const QString &type,
                                        const std::optional<QString> &title,
                                        const QStringList &participantIDs);
    QCoro::Task<QJsonObject> createChannel(const QString &title, const QString &userID);
    QCoro::Task<Objects> listChannels(const QString &userID);
    QCoro::Task<QJsonObject> getOrCreateSavedChat(const QString &userID);
    QCoro::Task<QJsonObject> createChatInvite(const QString &chatId, int expiresHours);
    /// Local participants whose ids don't parse are left out.
    QCoro::Task<QJsonObject> createFederatedChat(const QString &title, const QStringList &localParticipantIDs,
                                                 const QStringList &remoteMX);

    // Messages
    QCoro::Task<Objects> fetchMessages(const QString &chatID, const std::optional<QString> &before,
                                       int limit);
    QCoro::Task<QJsonObject> editMessage(const QString &messageID, const QString &userID,
                                         const QString &newContent);
    QCoro::Task<void> deleteMessage(const QString &messageID, const QString &userID);
    QCoro::Task<void> pinMessage(const QString &chatID, const QString &messageID);
    QCoro::Task<void> unpinMessage(const QString &chatID, const QString &messageID);
    QCoro::Task<QJsonObject> addReaction(const QString &messageID, const QString &emoji);
    /// `isStarred` is the state before. Gives whether the server said "starred" or "unstarred".
    QCoro::Task<bool> toggleStar(const QString &messageID, const QString &userID, bool isStarred);
    QCoro::Task<Objects> fetchStarredMessages(const QString &userID);
    QCoro::Task<QJsonObject> translateMessage(const QString &messageID, const QString &targetLang);
    QCoro::Task<Objects> fetchMentions(const QString &userID);

    // Search
    QCoro::Task<Objects> searchUsers(const QString &query, const QString &userID);
    QCoro::Task<Objects> globalSearch(const QString &query, const QString &userID);
    QCoro::Task<Objects> semanticSearch(const QString &query, const QString &userID,
                                        const std::optional<QString> &chatID = std::nullopt);

    // Folders
    QCoro::Task<QList<ChatFolder>> listChatFolders();
    QCoro::Task<std::optional<ChatFolder>> createChatFolder(const QString &name, const QString &icon);
    QCoro::Task<void> manageFolderChat(const QString &folderId, const QString &chatId, const QString &action);

    // Voice and files. Uploads hold the file in memory and throw FileError, with nothing sent, when it can't
    // be read.
    QCoro::Task<QJsonObject> sendVoiceMessage(QString chatID, QUrl fileURL, QString idempotencyKey);
    QCoro::Task<QByteArray> downloadVoice(const QString &chatID, const QString &voiceID);
    /// Goes out without the token. Absent when the answer is no object.
    QCoro::Task<std::optional<QJsonObject>> uploadFile(QString chatID, QUrl fileURL);
    QCoro::Task<QJsonObject> transcribeVoice(QUrl fileURL);

    // Push
    QCoro::Task<void> registerPushToken(const QString &deviceToken, const QString &userID,
                                        const QString &platform);

    // Contacts. The two requests give the server's `status`, or "error".
    QCoro::Task<Objects> fetchContacts(const QString &userID);
    QCoro::Task<Objects> getContactRequests(const QString &userID);
    QCoro::Task<QString> sendContactRequest(const QString &from, const QString &to);
    QCoro::Task<QString> handleContactRequest(const QString &from, const QString &contactID,
                                              const QString &action);
    QCoro::Task<void> addContact(const ContactRecord &contact);

    // Pre-keys, all in base64
    /// Gives how many one-time keys were stored.
    QCoro::Task<qint64> uploadPreKeys(const QString &userID, const QString &identityKey,
                                      const QString &signedPreKey, const QString &signature,
                                      const QStringList &oneTimeKeys);
    QCoro::Task<std::optional<PreKeyBundle>> fetchPreKeyBundle(const QString &userID);
    QCoro::Task<qint64> checkPreKeyCount(const QString &userID);

    // Devices and sync
    QCoro::Task<void> registerDevice();
    QCoro::Task<Objects> listDevices();
    QCoro::Task<void> revokeDevice(const QString &id);
    /// From the session's cursor when `since` is absent.
    QCoro::Task<QJsonObject> pullDeviceSync(const std::optional<qint64> &since = std::nullopt);

    // Account
    QCoro::Task<void> deleteUserAccount(const QString &password);
    QCoro::Task<QJsonObject> createEncryptedBackup(const QString &password);

    // AI
    QCoro::Task<QJsonObject> smartReply(const QList<Texts> &messages, const QString &userID);
    QCoro::Task<QJsonObject> summarizeChat(const QString &chatID, const QString &period,
                                           const QString &userID);
    QCoro::Task<QJsonObject> personaReply(const QString &chatId, const QList<Texts> &messages);
    QCoro::Task<QJsonObject> aiAgentChat(const QString &message, const QString &chatID,
                                         const QString &userID);
    QCoro::Task<QJsonObject> memoryQuery(const QString &query,
                                         const std::optional<QString> &chatId = std::nullopt);
    QCoro::Task<QJsonObject> discoverThread(const QString &query);
    QCoro::Task<ChatAgents> listChatAgents(const QString &chatId);
    QCoro::Task<void> addChatAgent(const QString &chatId, const QString &role);
    QCoro::Task<void> removeChatAgent(const QString &chatId, const QString &agentId);

    // Bots and mini apps
    QCoro::Task<QJsonObject> listBots(const QString &userID);
    QCoro::Task<Objects> discoverBots();
    QCoro::Task<QJsonObject> openBotChat(const QString &botId);
    QCoro::Task<QJsonObject> botStats(const QString &botId);
    QCoro::Task<QJsonObject> webappInit(const QString &botId, const QString &chatId);
    QCoro::Task<void> submitMiniAppData(const QString &botId, const QString &chatId, const QJsonObject &data);

    // Skills
    QCoro::Task<SkillCatalogue> listSkills();
    QCoro::Task<void> installSkill(const QString &chatId, const QString &skillId);
    QCoro::Task<void> rateSkill(const QString &skillId, int rating);

    // Federation
    QCoro::Task<Objects> listFederationPeers();
    QCoro::Task<void> addFederationPeer(const QString &domain, const QString &baseURL);
    QCoro::Task<QJsonObject> pingFederationPeer(const QString &domain);
    /// `domain` may as well be a federated id.
    QCoro::Task<QJsonObject> discoverFederationPeer(const QString &domain);

    // Local network
    QCoro::Task<QJsonObject> registerP2P(const QString &localIP);
    /// Within the server's own idea of the subnet when it is absent or empty.
    QCoro::Task<QJsonObject> discoverP2P(const std::optional<QString> &subnet);

    // Zero-knowledge groups. The two fetches throw MessengerAPIError for an answer without their key.
    QCoro::Task<void> uploadZkIdentity(const QJsonObject &publicKeyJWK);
    QCoro::Task<QJsonObject> fetchZkIdentity(const QString &userId);
    /// Participants whose ids don't parse are left out.
    QCoro::Task<QJsonObject> createZkGroup(const QStringList &participantIds,
                                           const QJsonObject &encryptedMeta, const QJsonObject &wrappedKeys);
    QCoro::Task<QJsonObject> fetchZkSenderKey(const QString &chatId);
};

} // namespace orvane
