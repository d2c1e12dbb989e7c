#pragma once

#include "Model/MessengerChat.h"
#include "Server/HttpTransport.h"

#include <QCoroTask>

#include <QJsonObject>
#include <QList>
#include <QString>

#include <optional>

namespace orvane {

/// The client of the server's REST interface. Operations fail like the primitives of HttpTransport and read
/// their answers by ResultConventions.h. User ids are decimal texts that become integers in bodies, 0 where
/// they don't parse. The object outlives its operations. Main thread.
class MessengerAPI : public HttpTransport {
public:
    using HttpTransport::HttpTransport;

    static MessengerAPI &shared();

    // Chats and messages
    QCoro::Task<QList<MessengerChat>> fetchChats();
    QCoro::Task<QList<QJsonObject>> fetchMessages(const QString &chatID, const std::optional<QString> &before,
                                                  int limit);

    // Contacts and devices
    QCoro::Task<QList<QJsonObject>> fetchContacts(const QString &userID);
    QCoro::Task<void> registerDevice();
    /// From the session's cursor when `since` is absent.
    QCoro::Task<QJsonObject> pullDeviceSync(const std::optional<qint64> &since = std::nullopt);
};

} // namespace orvane
