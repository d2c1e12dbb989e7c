// SPDX-License-Identifier: MIT
#include "LocalNetwork/LanFrames.h"
#include "LocalNetwork/MessengerP2PDataChannel.h"
#include "Platform/SecretStore.h"
#include "Ratio.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QJsonDocument>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtEndian>

#include <memory>

// Direct delivery over loopback against a bare pair of sockets that does no more than it must.
using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

constexpr int messages = 20'000;
constexpr qsizetype large = 64 * 1024 * 1024;

struct NoStore : SecretStore {
    qint32 add(const QString &, const QString &, const QString &, const QByteArray &) override { return 0; }
    Match copyMatching(const QString &, const QString &) override { return {}; }
    qint32 remove(const QString &, const QString &) override { return 0; }
};

QJsonObject record() {
    return {{u"id"_s, u"0b2bd2f7-36fb-4b4e-9c40-9a3c6d4c6a51"_s},
            {u"sender_id"_s, u"10"_s},
            {u"content"_s, QString(850, u'x')},
            {u"created_at"_s, 1'700'000'000.25},
            {u"type"_s, u"text"_s},
            {u"p2p"_s, true}};
}

QByteArray framed(const QByteArray &body) {
    QByteArray frame(4, Qt::Uninitialized);
    qToBigEndian(quint32(body.size()), frame.data());
    return frame + body;
}

/// Two channels, the second of which has dialled the first.
struct Channels {
    Channels() {
        there.start();
        own = std::make_unique<MessengerP2PDataChannel>(session, 0, there.listenedPort());
        QEventLoop loop;
        QObject::connect(&there, &MessengerP2PDataChannel::connectedPeerIdsChanged, &loop, &QEventLoop::quit);
        own->connect(u"9"_s, u"127.0.0.1"_s);
        loop.exec();
    }

    int deliver() {
        QEventLoop loop;
        int heard = 0;
        there.onMessage = [&](const QString &, const QString &, const QJsonObject &) {
            if (++heard == messages)
                loop.quit();
        };
        const QJsonObject message = record();
        for (int i = 0; i < messages; ++i)
            own->send(u"9"_s, u"c"_s, message);
        loop.exec();
        return heard;
    }

    QTemporaryDir folder;
    MessengerSession session{std::make_unique<NoStore>(),
                             std::make_unique<UserDefaults>(folder.filePath(u"defaults.ini"_s))};
    MessengerP2PDataChannel there{session, 0};
    std::unique_ptr<MessengerP2PDataChannel> own;
};

/// Two connected sockets.
struct Sockets {
    Sockets() {
        server.listen(QHostAddress::LocalHost);
        writer.connectToHost(QHostAddress::LocalHost, server.serverPort());
        server.waitForNewConnection(-1);
        writer.waitForConnected();
        reader.reset(server.nextPendingConnection());
    }

    /// Writes the same frames and parses the same JSON.
    int deliver() {
        QEventLoop loop;
        int heard = 0;
        QByteArray buffer;
        const auto reading = QObject::connect(reader.get(), &QTcpSocket::readyRead, [&] {
            buffer += reader->readAll();
            qsizetype at = 0;
            while (buffer.size() - at >= 4) {
                const qsizetype length = qFromBigEndian<quint32>(buffer.constData() + at);
                if (buffer.size() - at - 4 < length)
                    break;
                QJsonDocument::fromJson(QByteArray::fromRawData(buffer.constData() + at + 4, length));
                at += 4 + length;
                ++heard;
            }
            buffer.remove(0, at);
            if (heard == messages)
                loop.quit();
        });
        const QJsonObject message{
            {u"type"_s, u"message"_s}, {u"chat_id"_s, u"c"_s}, {u"message"_s, record()}};
        for (int i = 0; i < messages; ++i)
            writer.write(framed(QJsonDocument(message).toJson(QJsonDocument::Compact)));
        loop.exec();
        QObject::disconnect(reading);
        return heard;
    }

    /// Until so many bytes have been read, into memory of their size.
    qint64 read(const QByteArray &bytes) {
        QEventLoop loop;
        QByteArray kept(bytes.size(), Qt::Uninitialized);
        qint64 got = 0;
        const auto reading = QObject::connect(reader.get(), &QTcpSocket::readyRead, [&] {
            while (const qint64 size = reader->read(kept.data() + got, kept.size() - got))
                got += size;
            if (got == kept.size())
                loop.quit();
        });
        writer.write(bytes);
        loop.exec();
        QObject::disconnect(reading);
        return got;
    }

    QTcpServer server;
    QTcpSocket writer;
    std::unique_ptr<QTcpSocket> reader;
};

/// A channel that is written to by a bare socket.
struct Fed : Channels {
    Fed() {
        writer.connectToHost(u"127.0.0.1"_s, there.listenedPort());
        writer.waitForConnected();
    }

    /// Until the message that stands at the end of the bytes has been heard.
    qint64 read(const QByteArray &bytes) {
        QEventLoop loop;
        there.onMessage = [&](const QString &, const QString &, const QJsonObject &) { loop.quit(); };
        writer.write(bytes);
        loop.exec();
        return bytes.size();
    }

    QTcpSocket writer;
};

} // namespace

int main(int argc, char **argv) {
    const QCoreApplication application(argc, argv);
    Sockets sockets;
    Fed fed;
    benchmarks::ratio(
        "20,000 messages of 1 KiB", 11, [&] { return fed.deliver(); }, [&] { return sockets.deliver(); });

    // No JSON, so that the frame is all that the channel has to do with it.
    const QByteArray bytes = framed(QByteArray(large, 'x')) + lan::framed(lan::message({}, {}));
    benchmarks::ratio(
        "a frame of 64 MiB, and its bytes", 21, [&] { return fed.read(bytes); },
        [&] { return sockets.read(bytes); });

    const QByteArray body = QJsonDocument(lan::message({}, {{u"content"_s, QString(large, u'x')}}))
                                .toJson(QJsonDocument::Compact);
    const QByteArray frame = framed(body);
    benchmarks::ratio(
        "a message of 64 MiB, and its bytes and JSON", 11, [&] { return fed.read(frame); },
        [&] { return sockets.read(frame) + QJsonDocument::fromJson(body).object().size(); });
    return 0;
}
