// SPDX-License-Identifier: MIT
#pragma once

#include "Model/MessengerPoll.h"

#include <QJsonObject>

/// The rules of voting. Nothing but the option's existence is asked: no poll is ever closed, and every vote
/// can be taken back. All are pure and thread-safe.
namespace orvane::PollVotes {

/// For any option.
bool hasVoted(const MessengerPoll &poll, const QString &userID);

/// Over all options: where several may be chosen, a person counts once for each.
int total(const MessengerPoll &poll);

/// The poll after `userID` tapped the option: the vote there is taken back, or else given, and where only one
/// may be chosen it leaves every other option. Unchanged where no option has this id.
MessengerPoll tapped(MessengerPoll poll, const QString &optionID, const QString &userID);

/// The poll after the server told of a vote: `voterID` stands behind each option for which `results`, by
/// option id, has a number above 0, and behind no other.
MessengerPoll told(MessengerPoll poll, const QString &voterID, const QJsonObject &results);

} // namespace orvane::PollVotes
