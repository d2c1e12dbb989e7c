// SPDX-License-Identifier: MIT
#include "Client.h"

#include <QJsonDocument>
#include <QTest>

#include <openssl/evp.h>

using namespace orvane::homeserver;
using namespace orvane::homeserver::test;
using namespace Qt::StringLiterals;

namespace {

const QString up = u"/api/auth/register"_s;
const QString in = u"/api/auth/login"_s;

QByteArray credentials(const QString &name, const QString &password = u"secret-1"_s) {
    return QJsonDocument(
               QJsonObject{{"username"_L1, name}, {"password"_L1, password}, {"device_id"_L1, "d-7"_L1}})
        .toJson();
}

const unsigned char *raw(const QByteArray &bytes) {
    return reinterpret_cast<const unsigned char *>(bytes.constData());
}

// Opens a backup by what it says about itself alone; nothing when the password or a byte is wrong.
QByteArray opened(const QJsonObject &backup, const QByteArray &password) {
    const auto bytesAt = [&](const char *key) {
        return QByteArray::fromBase64(valueAt(backup, key).toString().toLatin1());
    };
    const auto number = [&](const char *key) {
        return static_cast<uint64_t>(valueAt(backup, key).toInteger());
    };
    const QByteArray salt = bytesAt("salt");
    const QByteArray sealed = bytesAt("ciphertext");
    QByteArray tag = bytesAt("tag");
    QByteArray key(32, '\0');
    QByteArray plain(sealed.size(), '\0');
    EVP_PBE_scrypt(password.constData(), static_cast<size_t>(password.size()), raw(salt),
                   static_cast<size_t>(salt.size()), number("n"), number("r"), number("p"), 1ULL << 27U,
                   reinterpret_cast<unsigned char *>(key.data()), 32);
    EVP_CIPHER_CTX *context = EVP_CIPHER_CTX_new();
    auto *out = reinterpret_cast<unsigned char *>(plain.data());
    int length = 0;
    EVP_DecryptInit_ex(context, EVP_aes_256_gcm(), nullptr, raw(key), raw(bytesAt("nonce")));
    EVP_DecryptUpdate(context, out, &length, raw(sealed), static_cast<int>(sealed.size()));
    EVP_CIPHER_CTX_ctrl(context, EVP_CTRL_GCM_SET_TAG, static_cast<int>(tag.size()), tag.data());
    const bool good = EVP_DecryptFinal_ex(context, out + length, &length) == 1;
    EVP_CIPHER_CTX_free(context);
    return good ? plain : QByteArray();
}

} // namespace

class AccountsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void answerHasWhatTheClientReads() {
        Site site;
        for (const auto &[path, status] : {std::pair(up, 201), {in, 200}, {in, 200}}) {
            const Reply reply = site.send("POST", path, credentials(u"anna"_s));
            QCOMPARE(reply.status, status);
            QVERIFY(reply.text("token").size() >= 40);
            QCOMPARE(reply.at("user.id").type(), QJsonValue::Double);
            QCOMPARE(reply.text("user.username"), u"anna"_s);
            QCOMPARE(reply.text("user.display_name"), u"anna"_s);
            QCOMPARE(reply.text("device.id"), u"d-7"_s);
            QVERIFY(reply.at("sync_cursor").isDouble());
            QVERIFY(reply.at("max_devices").toInt() > 0);
        }
        const QByteArray shown = R"({"username":"b","display_name":"Bert K.","password":"secret-1"})";
        QCOMPARE(site.send("POST", up, shown).text("user.display_name"), u"Bert K."_s);
    }

    void sameNameInAnotherFormIsTaken() {
        Site site;
        const Person anna(site, u"Änna"_s);
        // The same letters: another case, and the accent apart from its letter.
        for (const auto *name : {u"Änna", u"änna", u"A\u0308nna"}) {
            const Reply reply = site.send("POST", up, credentials(QString::fromUtf16(name)));
            QCOMPARE(reply.status, 409);
            QCOMPARE(reply.error(), u"username_taken"_s);
        }
        for (const auto *password : {u"", u"p", u"null"}) // robots have none
            QVERIFY(
                QList({401, 400})
                    .contains(site.send("POST", in, credentials(u"bot_echo"_s, QString::fromUtf16(password)))
                                  .status));
    }

    void failuresCloseTheDoorForAMinute() {
        Company c;
        const QByteArray wrong = credentials(u"Anna"_s, u"wrong"_s);
        for (int i = 0; i < 5; ++i)
            QCOMPARE(c.site.send("POST", in, wrong).error(), u"invalid_credentials"_s);
        QCOMPARE(c.site.send("POST", in, wrong).error(), u"too_many_attempts"_s);
        QCOMPARE(c.site.send("POST", in, credentials(u"anna"_s)).status, 429);
        // Nobody else is shut out. Guesses of the signed-in count too.
        QCOMPARE(c.site.send("POST", in, credentials(u"bert"_s)).status, 200);
        for (int i = 0; i < 5; ++i)
            QCOMPARE(c.carl.send("DELETE", u"users/me"_s, R"({"password":"wrong"})").status, 403);
        QCOMPARE(c.carl.send("DELETE", u"users/me"_s, R"({"password":"secret-1"})").status, 429);
        c.site.now += 61;
        QCOMPARE(c.site.send("POST", in, credentials(u"anna"_s)).status, 200);
        QCOMPARE(c.carl.send("DELETE", u"users/me"_s, R"({"password":"secret-1"})").status, 200);
    }

    void manyGuessesAtOnceDoNotSlipThrough() {
        Site site;
        const Person anna(site, u"anna"_s);
        QList<QNetworkReply *> replies;
        for (int i = 0; i < 12; ++i)
            replies.append(site.start("POST", in, credentials(u"anna"_s, u"wrong"_s)));
        int checked = 0;
        for (QNetworkReply *reply : replies)
            checked += finish(reply).status == 401 ? 1 : 0;
        QCOMPARE(checked, 5);
    }

    void surplusDeviceDies() {
        Site site;
        Person first(site, u"anna"_s, u"first"_s);
        for (int i = 0; i < 10; ++i) {
            site.now += 1;
            Person::signIn(site, u"anna"_s, u"later-%1"_s.arg(i));
        }
        QCOMPARE(first.get(u"chats"_s).status, 401);
        QCOMPARE(Person::signIn(site, u"anna"_s, u"later-9"_s).get(u"devices"_s).count("devices"), 10);
    }

    void revokedDeviceDies() {
        Site site;
        Person laptop(site, u"anna"_s, u"laptop"_s);
        Person phone = Person::signIn(site, u"anna"_s, u"phone"_s);
        Person bert(site, u"bert"_s, u"phone"_s); // a namesake of the device
        Listener phones(site, phone);
        const Listener berts(site, bert);
        QCOMPARE(laptop.send("DELETE", u"devices/phone"_s, "{}").status, 200);
        QTRY_VERIFY(!phones.isOpen());
        QCOMPARE(phone.get(u"chats"_s).error(), u"unauthorized"_s);
        QVERIFY(berts.isOpen());
        QCOMPARE(bert.get(u"chats"_s).status, 200);
        // A device cannot register under another's name.
        laptop.post(u"devices/register"_s,
                    {{"device_id"_L1, "phone"_L1}, {"device_name"_L1, "L"_L1}, {"platform"_L1, "macos"_L1}});
        const Reply devices = laptop.get(u"devices"_s);
        QCOMPARE(devices.count("devices"), 1);
        QCOMPARE(devices.text("devices.0.id"), u"laptop"_s);
        QCOMPARE(devices.text("devices.0.device_name"), u"L"_s);
    }

    void survivesRestartWithoutItsSecrets() {
        Site site;
        Person anna(site, u"anna"_s);
        QByteArray everything;
        for (const QString &name : {u"homeserver.sqlite"_s, u"homeserver.sqlite-wal"_s}) {
            QFile file(site.dataFolder() + u'/' + name);
            QVERIFY(file.open(QIODevice::ReadOnly));
            everything += file.readAll();
        }
        QVERIFY(everything.contains("anna"));
        QVERIFY(!everything.contains("secret-1"));
        QVERIFY(!everything.contains(anna.token.toUtf8()));
        site.restart();
        QCOMPARE(anna.get(u"chats"_s).status, 200);
        QCOMPARE(Person::signIn(site, u"anna"_s, u"device-2"_s).id, anna.id);
        QCOMPARE(site.send("POST", up, credentials(u"anna"_s)).status, 409);
    }

    void exportAndBackupHoldOnesOwnThings() {
        Company c;
        c.anna.say(lobby(), u"my words"_s);
        c.bert.say(lobby(), u"his words"_s);
        c.anna.post(u"folders"_s, {{"name"_L1, "Work"_L1}});
        const Reply reply = c.anna.get(u"users/me/export"_s);
        QCOMPARE(reply.text("user.username"), u"anna"_s);
        QCOMPARE(reply.count("messages"), 1);
        QCOMPARE(reply.text("folders.0.name"), u"Work"_s);
        QCOMPARE(reply.count("devices"), 1);
        QVERIFY(!reply.body.contains("scrypt"));
        QVERIFY(!reply.body.contains(c.anna.token.toUtf8()));

        const QJsonObject password{{"password"_L1, u"пароль"_s}};
        const QJsonObject backup = c.anna.post(u"users/me/backup"_s, password).json;
        QCOMPARE(valueAt(QJsonDocument::fromJson(opened(backup, "пароль")).object(), "messages.0.content")
                     .toString(),
                 u"my words"_s);
        QVERIFY(opened(backup, "another").isEmpty());
        QVERIFY(c.anna.post(u"users/me/backup"_s, password).json["salt"_L1] != backup["salt"_L1]);
    }

    void deletionLeavesNothing() {
        Company c;
        const QString direct = c.anna.directChatWith(c.bert);
        c.anna.say(direct, u"to be forgotten"_s);
        c.bert.say(direct, u"kept"_s);
        c.anna.say(lobby(), u"to be forgotten too"_s);
        c.anna.post(u"bots"_s, {{"name"_L1, "Orphan"_L1}, {"is_public"_L1, true}});
        const Listener annas(c.site, c.anna);
        QCOMPARE(c.anna.send("DELETE", u"users/me"_s, R"({"password":"wrong"})").error(),
                 u"invalid_credentials"_s);
        QCOMPARE(c.anna.send("DELETE", u"users/me"_s).status, 400);
        QCOMPARE(c.anna.get(u"chats"_s).status, 200);
        QCOMPARE(c.anna.send("DELETE", u"users/me"_s, R"({"password":"secret-1"})").status, 200);
        QTRY_VERIFY(!annas.isOpen());
        QCOMPARE(c.anna.get(u"chats"_s).status, 401);
        QCOMPARE(c.site.send("POST", in, credentials(u"anna"_s)).status, 401);

        QCOMPARE(c.bert.messages(direct).size(), 1);
        QCOMPARE(c.bert.chat(direct)["title"_L1], QJsonValue("Deleted account"_L1));
        QVERIFY(c.bert.messages(lobby()).isEmpty());
        QCOMPARE(c.bert.get(u"search/global?q=forgotten"_s).count("messages"), 0);
        QCOMPARE(c.bert.get(u"users/search?q=anna"_s).count("users"), 0);
        QCOMPARE(c.bert.get(u"bots/discover"_s).count("bots"), 1);
        // The name is free, and its next bearer is somebody else.
        const Person next(c.site, u"anna"_s);
        QVERIFY(next.id != c.anna.id);
        QVERIFY(c.bert.directChatWith(next) != direct);
    }
};

QTEST_GUILESS_MAIN(AccountsTest)
#include "tst_homeserver_accounts.moc"
