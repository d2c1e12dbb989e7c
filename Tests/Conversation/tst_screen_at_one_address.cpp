// SPDX-License-Identifier: MIT
#include "Conversation/Screen/MessengerChatView.h"
#include "Support/OpenChatParts.h"
#include "Support/TestMain.h"

#include <QMetaProperty>
#include <QQmlComponent>
#include <QQmlEngine>

#include <array>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

/// Where one screen lies after the other; freed memory is handed out again on purpose.
class Place {
public:
    std::shared_ptr<MessengerChatView> screen(OpenChatParts &parts, const QString &chatID) {
        MessengerChat chat;
        chat.id = chatID;
        auto *made = new (m_bytes.data()) MessengerChatView(chat, {}, u"7"_s, parts.chatParts());
        return {made, [](MessengerChatView *screen) { screen->~MessengerChatView(); }};
    }

private:
    alignas(MessengerChatView) std::array<std::byte, sizeof(MessengerChatView)> m_bytes{};
};

/// The properties that may change, as QML sees them on the one `screen` that it is handed.
QList<QMetaProperty> observables() {
    QList<QMetaProperty> found;
    const QMetaObject &type = MessengerChatView::staticMetaObject;
    for (int index = type.propertyOffset(); index < type.propertyCount(); ++index)
        if (!type.property(index).isConstant())
            found.append(type.property(index));
    return found;
}

QByteArray watchers() {
    QByteArray text = "import QtQml\nQtObject {\n property QtObject screen\n";
    for (const QMetaProperty &observable : observables())
        text += QByteArray(" property var %1: screen ? screen.%1 : null\n").replace("%1", observable.name());
    return text + "}\n";
}

/// Gives everything that may change a value that it has had nowhere before.
void changeAll(MessengerChatView &screen, int round) {
    const QString text = QString::number(round);
    MessengerMessage message;
    message.id = text;
    for (const QMetaProperty &observable : observables()) {
        const QVariant before = observable.read(&screen);
        if (before.typeId() == QMetaType::Bool)
            observable.write(&screen, !before.toBool());
        else if (before.canConvert<QString>())
            observable.write(&screen, text);
    }
    screen.translatedText = QVariantMap{{text, text}};
    screen.availableChats = QList{screen.chat};
    screen.typingUserIDs = QSet{text};
    screen.pinnedMessageIDs = QSet{text};
    for (auto *optional : {&screen.aiResponse, &screen.translatingMsgID, &screen.chatSummary,
                           &screen.chatContext, &screen.activeBotId, &screen.activeBotName})
        *optional = text;
    for (auto *optional :
         {&screen.replyToMessage, &screen.messageToForward, &screen.editingMessage, &screen.deletingMessage})
        *optional = message;
}

} // namespace

class TestScreenAtOneAddress : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyObservableIsHeardOfEveryScreen() {
        OpenChatParts parts;
        QQmlEngine engine;
        QQmlComponent component(&engine);
        component.setData(watchers(), QUrl());
        const std::unique_ptr<QObject> living(component.create());
        QVERIFY2(living, qPrintable(component.errorString()));
        QVERIFY(observables().size() > 20);
        std::array<Place, 2> places;
        std::shared_ptr<MessengerChatView> shown;
        for (int round = 0; round < 200; ++round) {
            const auto next = places[size_t(round % 2)].screen(parts, QString::number(round));
            living->setProperty("screen", QVariant::fromValue<QObject *>(next.get()));
            shown = next;
            changeAll(*shown, round);
            for (const QMetaProperty &observable : observables()) {
                const QVariant seen = living->property(observable.name());
                const QVariant there = observable.read(shown.get());
                // What QML can't compare is compared by what it is.
                QVERIFY2(seen == there ||
                             (seen.typeId() != there.typeId() && seen.isValid() == there.isValid()),
                         qPrintable(u"%1, round %2"_s.arg(QLatin1StringView(observable.name())).arg(round)));
            }
        }
        living->setProperty("screen", QVariant::fromValue<QObject *>(nullptr));
    }
};

ORVANE_TEST_MAIN(TestScreenAtOneAddress)
#include "tst_screen_at_one_address.moc"
