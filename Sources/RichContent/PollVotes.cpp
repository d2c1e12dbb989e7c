// SPDX-License-Identifier: MIT
#include "RichContent/PollVotes.h"

#include "Base/Json.h"

#include <algorithm>
#include <numeric>

namespace orvane::PollVotes {

bool hasVoted(const MessengerPoll &poll, const QString &userID) {
    return std::any_of(poll.options.cbegin(), poll.options.cend(),
                       [&](const PollOption &option) { return option.voters.contains(userID); });
}

int total(const MessengerPoll &poll) {
    return std::accumulate(poll.options.cbegin(), poll.options.cend(), 0,
                           [](int sum, const PollOption &option) { return sum + int(option.voters.size()); });
}

MessengerPoll tapped(MessengerPoll poll, const QString &optionID, const QString &userID) {
    const auto chosen = std::find_if(poll.options.begin(), poll.options.end(),
                                     [&](const PollOption &option) { return option.id == optionID; });
    if (chosen == poll.options.end() || chosen->voters.remove(userID))
        return poll;
    if (!poll.isMultipleChoice)
        for (PollOption &option : poll.options)
            option.voters.remove(userID);
    chosen->voters.insert(userID);
    return poll;
}

MessengerPoll told(MessengerPoll poll, const QString &voterID, const QJsonObject &results) {
    for (PollOption &option : poll.options) {
        if (json::number(results, option.id).value_or(0) > 0)
            option.voters.insert(voterID);
        else
            option.voters.remove(voterID);
    }
    return poll;
}

} // namespace orvane::PollVotes
