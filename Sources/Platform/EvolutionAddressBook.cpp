// SPDX-License-Identifier: MIT
#include "Platform/EvolutionAddressBook.h"

#include "Platform/EvolutionSources.h"
#include "Platform/VCard.h"

#include <QBuffer>
#include <QCoroFuture>
#include <QCoroSignal>
#include <QDBusArgument>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QtConcurrentRun>
#include <QUrl>

namespace orvane {

using namespace Qt::StringLiterals;

namespace {

using Objects = QMap<QDBusObjectPath, QMap<QString, QVariantMap>>;

const auto sourceInterface = u"org.gnome.evolution.dataserver.Source"_s;
const auto bookInterface = u"org.gnome.evolution.dataserver.AddressBook"_s;

constexpr qint64 largestPicture = 262'144;

QCoro::Task<QDBusMessage> answerTo(QDBusPendingCall pending) {
    if (!pending.isFinished()) {
        auto *watcher = new QDBusPendingCallWatcher(pending);
        co_await qCoro(watcher, &QDBusPendingCallWatcher::finished);
        watcher->deleteLater();
    }
    QDBusMessage answer = pending.reply();
    co_return answer;
}

// The numbers behind the names change with the releases.
QString firstNumbered(const QStringList &names, const QString &prefix) {
    const QRegularExpression numbered(u"^"_s + QRegularExpression::escape(prefix) + u"\\d+$"_s);
    const qsizetype index = names.indexOf(numbered);
    return index < 0 ? QString() : names.at(index);
}

// The data server keeps pictures in files of its own. A card that points elsewhere is not followed: it may
// come from anybody.
QByteArray pictureAt(const QString &address, const QStringList &folders) {
    const QUrl url(address);
    const QString path = url.isLocalFile() ? QFileInfo(url.toLocalFile()).canonicalFilePath() : QString();
    for (const QString &folder : folders) {
        const QString canonical = QFileInfo(folder).canonicalFilePath();
        QFile file(path);
        if (!canonical.isEmpty() && path.startsWith(canonical + u'/') && QFileInfo(path).isFile() &&
            file.open(QIODevice::ReadOnly))
            return file.read(largestPicture);
    }
    return {};
}

QList<AddressBookPerson> peopleOf(const QStringList &cards, const QStringList &pictureFolders) {
    QList<AddressBookPerson> people;
    for (const QString &text : cards) {
        QByteArray bytes = text.toUtf8();
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        for (VCard &card : readVCards(buffer)) {
            if (card.person.picture.isEmpty())
                card.person.picture = pictureAt(card.pictureAddress, pictureFolders);
            people.append(card.person);
        }
    }
    return people;
}

QStringList ownFolders() {
    return {QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u"/evolution"_s,
            QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + u"/evolution"_s};
}

} // namespace

QDBusPendingCall EvolutionAddressBook::call(const QString &service, const QString &path,
                                            const QString &interface, const QString &method,
                                            const QVariantList &arguments) {
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    return m_bus.asyncCall(message);
}

QCoro::Task<std::optional<EvolutionAddressBook::Services>> EvolutionAddressBook::services() {
    QStringList names;
    const QStringList methods{u"ListNames"_s, u"ListActivatableNames"_s};
    for (const QString &method : methods) {
        const QDBusPendingCall pending =
            call(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s, method);
        const QDBusMessage answer = co_await answerTo(pending);
        names += QDBusPendingReply<QStringList>(answer).value();
    }
    Services found{firstNumbered(names, u"org.gnome.evolution.dataserver.Sources"_s),
                   firstNumbered(names, u"org.gnome.evolution.dataserver.AddressBook"_s)};
    if (found.sources.isEmpty() || found.addressBooks.isEmpty())
        co_return std::nullopt;
    co_return found;
}

QCoro::Task<bool> EvolutionAddressBook::isThere() {
    const std::optional<Services> found = co_await services();
    co_return found.has_value();
}

QCoro::Task<bool> EvolutionAddressBook::requestAccess() {
    const std::optional<Services> found = co_await services();
    if (!found)
        co_return true;
    const QString service = found->sources;
    const Sources known = co_await sources(service);
    co_return !known.refused;
}

QCoro::Task<EvolutionAddressBook::Sources> EvolutionAddressBook::sources(QString service) {
    const QDBusPendingCall pending = call(service, u"/org/gnome/evolution/dataserver/SourceManager"_s,
                                          u"org.freedesktop.DBus.ObjectManager"_s, u"GetManagedObjects"_s);
    const QDBusMessage answer = co_await answerTo(pending);
    Sources found;
    found.refused = answer.errorName() == QDBusError::errorString(QDBusError::AccessDenied);
    if (answer.signature() != "a{oa{sa{sv}}}"_L1)
        co_return found;
    const auto objects = qdbus_cast<Objects>(answer.arguments().constFirst());
    for (const auto &interfaces : objects) {
        const QVariantMap source = interfaces.value(sourceInterface);
        found.keyFiles.insert(source.value(u"UID"_s).toString(), source.value(u"Data"_s).toString());
    }
    co_return found;
}

QCoro::Task<QStringList> EvolutionAddressBook::cards(QString service, QString bookId) {
    const QDBusPendingCall opening =
        call(service, u"/org/gnome/evolution/dataserver/AddressBookFactory"_s,
             u"org.gnome.evolution.dataserver.AddressBookFactory"_s, u"OpenAddressBook"_s, {bookId});
    const QDBusMessage place = co_await answerTo(opening);
    if (place.signature() != "ss"_L1)
        co_return QStringList();
    const QString path = place.arguments().at(0).toString();
    const QString owner = place.arguments().at(1).toString();
    // A book that doesn't open has an answer to the next question: an error.
    const QDBusPendingCall open = call(owner, path, bookInterface, u"Open"_s);
    co_await answerTo(open);
    const QDBusPendingCall asking = call(owner, path, bookInterface, u"GetContactList"_s,
                                         {u"(contains \"x-evolution-any-field\" \"\")"_s});
    const QDBusMessage answer = co_await answerTo(asking);
    call(owner, path, bookInterface, u"Close"_s);
    QStringList found = QDBusPendingReply<QStringList>(answer).value();
    co_return found;
}

QCoro::Task<QList<AddressBookPerson>> EvolutionAddressBook::people() {
    QStringList found;
    const std::optional<Services> there = co_await services();
    if (there) {
        const QString sourceService = there->sources;
        const QString bookService = there->addressBooks;
        const Sources known = co_await sources(sourceService);
        const QStringList books = evolutionAddressBooks(known.keyFiles);
        for (const QString &book : books) {
            const QStringList more = co_await cards(bookService, book);
            found += more;
        }
    }
    const QList<AddressBookPerson> people = co_await QtConcurrent::run(&peopleOf, found, ownFolders());
    co_return people;
}

} // namespace orvane
