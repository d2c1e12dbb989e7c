// SPDX-License-Identifier: MIT
#include "Conversation/Actions/ChatExport.h"

#include <QSaveFile>
#include <QtConcurrentRun>

#include <tuple>

namespace orvane {

QString exportedConversation(Conversation &chat) {
    QString text;
    for (const MessengerMessage &message : chat.messages.records())
        text += chat.cipher.plainText(message.content) + u'\n';
    return text;
}

void writeExport(const QUrl &file, const QString &text) {
    std::ignore = QtConcurrent::run([path = file.toLocalFile(), bytes = text.toUtf8()] {
        QSaveFile target(path);
        // Whoever chose the place sees whether the file is there.
        if (target.open(QIODevice::WriteOnly) && target.write(bytes) == bytes.size())
            target.commit();
    });
}

} // namespace orvane
