// SPDX-License-Identifier: MIT
#include "Invariant.h"
#include "Model/MessengerMessage.h"
#include "RichContent/PollVotes.h"
#include "Server/WSEvent.h"

#include <cstdint>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

void checkVote(const QJsonObject &results, const QString &voterID) {
    const QString other = voterID + u'x';
    MessengerPoll poll;
    poll.createdAt = QDateTime::fromSecsSinceEpoch(0, Qt::UTC);
    for (const QString &id : results.keys() + QStringList{u"unheard of"_s})
        poll.options.append({id, QString(), {other}});
    const MessengerPoll told = PollVotes::told(poll, voterID, results);
    invariant(told.options.size() == poll.options.size(), "options stay");
    for (const PollOption &option : told.options) {
        invariant(option.voters.contains(other), "the others' votes stay");
        invariant(option.voters.contains(voterID) == (results.value(option.id).toDouble() > 0),
                  "a number above 0 is a vote");
    }
    invariant(PollVotes::told(told, voterID, results) == told, "a vote that is told twice counts once");
    survivesStoring(told);
}

void checkEvent(const WSEvent &event) {
    invariant(event.type != "pong"_L1 && event.data.value("type"_L1) == event.type,
              "an event carries its type");
    if (const auto raw = json::object(event.data, u"message")) {
        if (const auto message = MessengerMessage::fromHistory(u"3"_s, *raw))
            survivesStoring(*message);
    }
    for (const MessageReaction &reaction :
         MessengerMessage::parseReactions(json::list(event.data, u"reactions").value_or(QJsonArray())))
        survivesStoring(reaction);
    if (const auto results = json::object(event.data, u"results"))
        checkVote(*results, json::text(event.data, u"voter_id").value_or(QString()));
}

} // namespace

/// A text frame of the event socket, as far as it goes without a chat to show it in.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QString frame = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    const auto event = WSEvent::fromFrame(frame);
    const QJsonValue type = parsed(frame.toUtf8()).toObject().value("type"_L1);
    invariant(event.has_value() == (type.isString() && type != "pong"_L1),
              "an object with a text type is an event");
    if (event)
        checkEvent(*event);
    return 0;
}
