// SPDX-License-Identifier: MIT
#pragma once

#include "Base/RecordList.h"
#include "Model/MessengerPoll.h"

#include <QtQml/qqmlregistration.h>

namespace orvane {

/// A poll as one person sees it. It holds no votes of its own: a tap gives a changed copy, and what is shown
/// changes when that copy comes back as `poll`. Main thread.
class PollCardView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(orvane::MessengerPoll poll READ poll WRITE setPoll NOTIFY changed)
    Q_PROPERTY(QString currentUserID READ currentUserID WRITE setCurrentUserID NOTIFY changed)
    /// The person has a vote anywhere in the poll: results are shown.
    Q_PROPERTY(bool hasVoted READ hasVoted NOTIFY changed)
    /// All votes.
    Q_PROPERTY(int total READ total NOTIFY changed)
    Q_PROPERTY(orvane::RecordListModel *options READ optionModel CONSTANT)

public:
    using QObject::QObject;

    const MessengerPoll &poll() const { return m_poll; }
    void setPoll(const MessengerPoll &poll);
    const QString &currentUserID() const { return m_currentUserID; }
    void setCurrentUserID(const QString &userID);

    bool hasVoted() const;
    int total() const;
    RecordListModel *optionModel() { return &m_options; }

    /// How many chose the option.
    Q_INVOKABLE static int votes(const orvane::PollOption &option) { return int(option.voters.size()); }
    Q_INVOKABLE bool isSelected(const orvane::PollOption &option) const;
    /// Gives the vote of `currentUserID` to the option, or takes it back.
    Q_INVOKABLE void tap(const QString &optionID);

Q_SIGNALS:
    void changed();
    /// The poll with the person's new choice.
    void vote(const orvane::MessengerPoll &poll);

private:
    MessengerPoll m_poll;
    QString m_currentUserID;
    RecordList<PollOption> m_options;
};

} // namespace orvane
