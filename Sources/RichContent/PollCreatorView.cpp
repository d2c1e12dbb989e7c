// SPDX-License-Identifier: MIT
#include "RichContent/PollCreatorView.h"

#include "Base/FreshId.h"

namespace orvane {

PollCreatorView::PollCreatorView(QObject *parent)
    : QObject(parent)
    , m_canCreateNotifier(m_canCreate.addNotifier([this] { Q_EMIT canCreateChanged(); })) {
    m_canCreate.setBinding([this] {
        const bool enough = filledOptions().size() >= fewestOptions;
        return enough && !question.value().trimmed().isEmpty();
    });
}

void PollCreatorView::setOption(int index, const QString &text) {
    QStringList changed = options;
    if (index < 0 || index >= changed.size())
        return;
    changed[index] = text;
    options = changed;
}

void PollCreatorView::addOption() {
    if (options.value().size() < mostOptions)
        options = options.value() + QStringList{QString()};
}

void PollCreatorView::removeOption(int index) {
    QStringList remaining = options;
    if (index < 0 || index >= remaining.size() || remaining.size() <= fewestOptions)
        return;
    remaining.removeAt(index);
    options = remaining;
}

void PollCreatorView::createPoll() {
    if (!canCreate())
        return;
    MessengerPoll poll;
    poll.id = freshId();
    poll.chatID = chatID;
    poll.creatorID = currentUserID;
    poll.question = question.value().trimmed();
    for (const QString &text : filledOptions()) {
        PollOption option;
        option.id = freshId();
        option.text = text;
        poll.options.append(option);
    }
    poll.isAnonymous = isAnonymous;
    poll.isMultipleChoice = isMultipleChoice;
    poll.createdAt = QDateTime::currentDateTimeUtc();
    Q_EMIT created(poll);
    isPresented = false;
}

QStringList PollCreatorView::filledOptions() const {
    QStringList filled;
    for (const QString &text : options.value())
        if (const QString trimmed = text.trimmed(); !trimmed.isEmpty())
            filled.append(trimmed);
    return filled;
}

} // namespace orvane
