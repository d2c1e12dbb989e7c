#include "Server/MessengerAPI.h"
#include "Support/Await.h"
#include "Support/ScriptedHttpServer.h"
#include "Support/SignedInSession.h"
#include "Support/TestMain.h"

#include <functional>

using namespace orvane;

namespace {

// How a result reads in the table.
QString told(bool) {
    return QStringLiteral("done");
}
QString told(const QJsonObject &map) {
    return QString::fromUtf8(json::compact(map));
}
QString told(const QList<QJsonObject> &maps) {
    QStringList lines;
    for (const QJsonObject &map : maps)
        lines.append(told(map));
    return lines.join(QLatin1Char('|'));
}
QString told(const QList<MessengerChat> &chats) {
    QStringList lines;
    for (const MessengerChat &chat : chats)
        lines.append(chat.id + QLatin1Char(' ') + chat.title.value_or(QStringLiteral("-")));
    return lines.join(QLatin1Char('|'));
}

template <typename T>
QString resultOf(QCoro::Task<T> task) {
    const auto outcome = outcomeOf(std::move(task));
    return outcome.value ? told(*outcome.value) : outcome.failure;
}

/// One operation of the interface: how it is called, what goes out, and what a good answer gives.
struct Operation {
    const char *name;
    std::function<QString(MessengerAPI &)> call;
    const char *method;
    const char *target;
    /// Compact JSON with its keys in order; null for a request without a body.
    const char *body;
    const char *answer;
    const char *result;
    /// A header beside those that every request has.
    const char *header = nullptr;
    const char *headerValue = nullptr;
};

const std::vector<Operation> &operations() {
    static const auto text = [](const char *value) { return QString::fromUtf8(value); };
    static const std::vector<Operation> all{
        // Chats and messages
        {"fetchChats", [](MessengerAPI &api) { return resultOf(api.fetchChats()); }, "GET",
         "/api/messenger/chats", nullptr, R"({"chats":[{"id":"3","title":"T"},{"id":"4"}]})", "3 T|4 -"},
        {"fetchMessages, the latest",
         [](MessengerAPI &api) { return resultOf(api.fetchMessages(text("3"), std::nullopt, 50)); }, "GET",
         "/api/messenger/chats/3/messages?limit=50", nullptr, R"({"messages":[{"id":"b"},{"id":"a"}]})",
         R"({"id":"b"}|{"id":"a"})"},
        {"fetchMessages, older",
         [](MessengerAPI &api) { return resultOf(api.fetchMessages(text("3"), text("1700000000.5&x"), 1)); },
         "GET", "/api/messenger/chats/3/messages?limit=1&before=1700000000.5&x", nullptr,
         R"({"messages":[]})", ""},
        {"fetchMessages, a chat whose id looks like a place holder",
         [](MessengerAPI &api) { return resultOf(api.fetchMessages(text("%2Fa%25"), std::nullopt, 7)); },
         "GET", "/api/messenger/chats/%2Fa%25/messages?limit=7", nullptr, R"({"messages":[]})", ""},
        // Contacts and devices
        {"fetchContacts", [](MessengerAPI &api) { return resultOf(api.fetchContacts(text("7"))); }, "GET",
         "/api/messenger/contacts?user_id=7", nullptr, R"({"contacts":[{"id":8}]})", R"({"id":8})"},
        {"registerDevice", [](MessengerAPI &api) { return resultOf(api.registerDevice()); }, "POST",
         "/api/messenger/devices/register", R"({"device_id":"dev_1","device_name":"Mac","platform":"macos"})",
         "", "done"},
        {"pullDeviceSync, from the session's cursor",
         [](MessengerAPI &api) { return resultOf(api.pullDeviceSync()); }, "GET",
         "/api/messenger/sync?since=11", nullptr, R"({"cursor":12})", R"({"cursor":12})"},
        {"pullDeviceSync, from the beginning",
         [](MessengerAPI &api) { return resultOf(api.pullDeviceSync(0)); }, "GET",
         "/api/messenger/sync?since=0", nullptr, "[]", "{}"},
    };
    return all;
}

} // namespace

class TestMessengerApi : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void operationsGoOutAndComeBackExactly_data() { eachOperation(); }
    void operationsGoOutAndComeBackExactly();
    void operationsPassFailuresOn_data() { eachOperation(); }
    void operationsPassFailuresOn();
    void chatListIsReadStrictly_data();
    void chatListIsReadStrictly();

private:
    static void eachOperation() {
        QTest::addColumn<int>("index");
        for (size_t index = 0; index < operations().size(); ++index)
            QTest::newRow(operations()[index].name) << int(index);
    }

    ScriptedHttpServer m_server;
    std::unique_ptr<SignedInSession> m_signedIn;
    std::unique_ptr<MessengerAPI> m_api;
};

void TestMessengerApi::init() {
    m_server.reset();
    m_signedIn = std::make_unique<SignedInSession>();
    m_signedIn->session.adoptDeviceId(QStringLiteral("dev_1"));
    m_signedIn->session.adoptSyncCursor(11);
    m_api = std::make_unique<MessengerAPI>(m_server.base(), m_signedIn->session);
}

void TestMessengerApi::operationsGoOutAndComeBackExactly() {
    QFETCH(int, index);
    const Operation &operation = operations()[size_t(index)];
    m_server.answerNext(ScriptedAnswer::of(200, operation.answer));
    QCOMPARE(operation.call(*m_api), QString::fromUtf8(operation.result));
    QCOMPARE(m_server.requests().size(), 1);
    const RecordedRequest sent = m_server.lastRequest();
    QCOMPARE(sent.method, operation.method);
    QCOMPARE(sent.target, operation.target);
    QCOMPARE(sent.body, QByteArray(operation.body));
    QCOMPARE(sent.headers.value("authorization"), "Bearer t0k");
    QCOMPARE(sent.headers.contains("idempotency-key"), qstrcmp(operation.header, "Idempotency-Key") == 0);
    if (operation.header)
        QCOMPARE(sent.headers.value(QByteArray(operation.header).toLower()), operation.headerValue);
}

void TestMessengerApi::operationsPassFailuresOn() {
    QFETCH(int, index);
    const Operation &operation = operations()[size_t(index)];
    m_server.answerNext(ScriptedAnswer::of(403, operation.answer));
    QCOMPARE(operation.call(*m_api), QStringLiteral("api 403"));
    m_server.answerNext(ScriptedAnswer::truncated(operation.answer));
    QCOMPARE(operation.call(*m_api), QStringLiteral("transport"));
    m_server.answerNext(ScriptedAnswer::of(200, "<html>"));
    const bool readsNothing = qstrcmp(operation.result, "done") == 0;
    QCOMPARE(operation.call(*m_api), readsNothing ? QStringLiteral("done") : QStringLiteral("json"));
}

void TestMessengerApi::chatListIsReadStrictly_data() {
    QTest::addColumn<QByteArray>("body");
    for (const char *body : {"[]", "{}", R"({"messages":[]})", R"({"chats":[{"id":7}]})",
                             R"({"chats":[{"id":"7"},{"id":"8","unread_count":"1"}]})"})
        QTest::newRow(body) << QByteArray(body);
}

void TestMessengerApi::chatListIsReadStrictly() {
    QFETCH(QByteArray, body);
    m_server.answerNext(ScriptedAnswer::of(200, body));
    QCOMPARE(resultOf(m_api->fetchChats()), QStringLiteral("decoding"));
}

ORVANE_TEST_MAIN(TestMessengerApi)

#include "tst_messenger_api.moc"
