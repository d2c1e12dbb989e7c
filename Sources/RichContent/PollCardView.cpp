// SPDX-License-Identifier: MIT
#include "RichContent/PollCardView.h"

#include "RichContent/PollVotes.h"

namespace orvane {

void PollCardView::setPoll(const MessengerPoll &poll) {
    m_poll = poll;
    m_options.assign(poll.options);
    Q_EMIT changed();
}

void PollCardView::setCurrentUserID(const QString &userID) {
    m_currentUserID = userID;
    Q_EMIT changed();
}

bool PollCardView::hasVoted() const {
    return PollVotes::hasVoted(m_poll, m_currentUserID);
}

int PollCardView::total() const {
    return PollVotes::total(m_poll);
}

bool PollCardView::isSelected(const PollOption &option) const {
    return option.voters.contains(m_currentUserID);
}

void PollCardView::tap(const QString &optionID) {
    Q_EMIT vote(PollVotes::tapped(m_poll, optionID, m_currentUserID));
}

} // namespace orvane
