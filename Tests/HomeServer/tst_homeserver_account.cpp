// SPDX-License-Identifier: MIT
#include "Client.h"

#include <QJsonDocument>
#include <QTest>

#include <openssl/evp.h>

using namespace orvane::homeserver;
using namespace orvane::homeserver::test;
using namespace Qt::StringLiterals;

namespace {

QByteArray bytesAt(const QJsonObject &object, const QString &key) {
    return QByteArray::fromBase64(object[key].toString().toLatin1());
}

const unsigned char *raw(const QByteArray &bytes) {
    return reinterpret_cast<const unsigned char *>(bytes.constData());
}

// Opens a backup by what it says about itself alone; nothing when the password or a byte is wrong.
QByteArray opened(const QJsonObject &backup, const QByteArray &password) {
    const QByteArray salt = bytesAt(backup, u"salt"_s);
    const QByteArray nonce = bytesAt(backup, u"nonce"_s);
    const QByteArray sealed = bytesAt(backup, u"ciphertext"_s);
    QByteArray tag = bytesAt(backup, u"tag"_s);
    QByteArray key(32, '\0');
    QByteArray plain(sealed.size(), '\0');
    EVP_PBE_scrypt(password.constData(), static_cast<size_t>(password.size()), raw(salt),
                   static_cast<size_t>(salt.size()), static_cast<uint64_t>(backup["n"_L1].toInteger()),
                   static_cast<uint64_t>(backup["r"_L1].toInteger()),
                   static_cast<uint64_t>(backup["p"_L1].toInteger()), 1ULL << 27U,
                   reinterpret_cast<unsigned char *>(key.data()), 32);
    EVP_CIPHER_CTX *context = EVP_CIPHER_CTX_new();
    int length = 0;
    EVP_DecryptInit_ex(context, EVP_aes_256_gcm(), nullptr, raw(key), raw(nonce));
    EVP_DecryptUpdate(context, reinterpret_cast<unsigned char *>(plain.data()), &length, raw(sealed),
                      static_cast<int>(sealed.size()));
    EVP_CIPHER_CTX_ctrl(context, EVP_CTRL_GCM_SET_TAG, static_cast<int>(tag.size()), tag.data());
    const bool good =
        EVP_DecryptFinal_ex(context, reinterpret_cast<unsigned char *>(plain.data()) + length, &length) == 1;
    EVP_CIPHER_CTX_free(context);
    return good ? plain : QByteArray();
}

} // namespace

class AccountTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void exportHoldsOnesOwnThings();
    void backupOpensWithItsPassword();
    void shortBackupPasswords_data();
    void shortBackupPasswords();
    void deletionNeedsThePassword();
    void deletionLeavesNothing();
    void guessesAtDeletionAreCounted();
};

void AccountTest::exportHoldsOnesOwnThings() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    anna.say(lobby(), u"my words"_s);
    bert.say(lobby(), u"his words"_s);
    anna.post(u"folders"_s, {{"name"_L1, "Work"_L1}});
    const Reply reply = anna.get(u"users/me/export"_s);
    QCOMPARE(reply.json["user"_L1]["username"_L1], QJsonValue("anna"_L1));
    QCOMPARE(reply.json["messages"_L1].toArray().size(), 1);
    QCOMPARE(reply.json["folders"_L1][0]["name"_L1], QJsonValue("Work"_L1));
    QCOMPARE(reply.json["devices"_L1].toArray().size(), 1);
    QVERIFY(!reply.body.contains("scrypt"));
    QVERIFY(!reply.body.contains(anna.token.toUtf8()));
}

void AccountTest::backupOpensWithItsPassword() {
    Site site;
    Person anna(site, u"anna"_s);
    anna.say(lobby(), u"my words"_s);
    const QJsonObject backup = anna.post(u"users/me/backup"_s, {{"password"_L1, u"пароль"_s}}).json;
    const QJsonObject data = QJsonDocument::fromJson(opened(backup, "пароль")).object();
    QCOMPARE(data["messages"_L1][0]["content"_L1], QJsonValue("my words"_L1));
    QVERIFY(opened(backup, "another").isEmpty());
    // Never the same twice.
    QVERIFY(anna.post(u"users/me/backup"_s, {{"password"_L1, u"пароль"_s}}).json["salt"_L1] !=
            backup["salt"_L1]);
}

void AccountTest::shortBackupPasswords_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("five characters") << QByteArray(R"({"password":"12345"})");
    QTest::newRow("none") << QByteArray("{}");
    QTest::newRow("a number") << QByteArray(R"({"password":123456})");
}

void AccountTest::shortBackupPasswords() {
    QFETCH(QByteArray, body);
    Site site;
    Person anna(site, u"anna"_s);
    QCOMPARE(anna.send("POST", u"users/me/backup"_s, body).status, 400);
}

void AccountTest::deletionNeedsThePassword() {
    Site site;
    Person anna(site, u"anna"_s);
    QCOMPARE(anna.send("DELETE", u"users/me"_s, R"({"password":"wrong"})").error(), u"invalid_credentials"_s);
    QCOMPARE(anna.send("DELETE", u"users/me"_s, "{}").status, 400);
    QCOMPARE(anna.send("DELETE", u"users/me"_s).status, 400);
    QCOMPARE(anna.get(u"chats"_s).status, 200);
}

void AccountTest::deletionLeavesNothing() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    const QString direct = anna.directChatWith(bert);
    anna.say(direct, u"to be forgotten"_s);
    bert.say(direct, u"kept"_s);
    anna.say(lobby(), u"to be forgotten too"_s);
    anna.post(u"bots"_s, {{"name"_L1, "Orphan"_L1}, {"is_public"_L1, true}});
    Listener annas(site, anna);
    QCOMPARE(anna.send("DELETE", u"users/me"_s, R"({"password":"secret-1"})").status, 200);
    QTRY_VERIFY(!annas.isOpen());
    QCOMPARE(anna.get(u"chats"_s).status, 401);
    QCOMPARE(site.send("POST", u"/api/auth/login"_s, R"({"username":"anna","password":"secret-1"})").status,
             401);

    QCOMPARE(bert.messages(direct).size(), 1);
    QCOMPARE(bert.chat(direct)["title"_L1], QJsonValue("Deleted account"_L1));
    QVERIFY(bert.messages(lobby()).isEmpty());
    QVERIFY(bert.get(u"search/global?q=forgotten"_s).json["messages"_L1].toArray().isEmpty());
    QVERIFY(bert.get(u"users/search?q=anna"_s).json["users"_L1].toArray().isEmpty());
    QCOMPARE(bert.get(u"bots/discover"_s).json["bots"_L1].toArray().size(), 1);
    // The name is free, and its next bearer is somebody else.
    Person next(site, u"anna"_s);
    QVERIFY(next.id != anna.id);
    QVERIFY(bert.directChatWith(next) != direct);
}

void AccountTest::guessesAtDeletionAreCounted() {
    Site site;
    Person anna(site, u"anna"_s);
    for (int i = 0; i < 5; ++i)
        QCOMPARE(anna.send("DELETE", u"users/me"_s, R"({"password":"wrong"})").status, 403);
    QCOMPARE(anna.send("DELETE", u"users/me"_s, R"({"password":"secret-1"})").status, 429);
    site.now += 61;
    QCOMPARE(anna.send("DELETE", u"users/me"_s, R"({"password":"secret-1"})").status, 200);
}

QTEST_GUILESS_MAIN(AccountTest)
#include "tst_homeserver_account.moc"
