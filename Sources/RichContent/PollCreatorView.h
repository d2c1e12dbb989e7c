// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"
#include "Model/MessengerPoll.h"

#include <QStringList>
#include <QtQml/qqmlregistration.h>

#include <optional>

namespace orvane {

/// The form for a new poll. Main thread.
class PollCreatorView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    OBSERVABLE(bool, isPresented, true)
    OBSERVABLE(QString, chatID)
    OBSERVABLE(QString, currentUserID)
    OBSERVABLE(QString, question)
    OBSERVABLE(QStringList, options, QStringList{QString(), QString()})
    OBSERVABLE(bool, isAnonymous)
    OBSERVABLE(bool, isMultipleChoice)
    /// There is a question and enough options, all without the white space at their ends.
    Q_PROPERTY(bool canCreate READ canCreate NOTIFY canCreateChanged)
    Q_PROPERTY(int fewestOptions MEMBER fewestOptions CONSTANT)
    Q_PROPERTY(int mostOptions MEMBER mostOptions CONSTANT)

public:
    static constexpr int fewestOptions = 2;
    static constexpr int mostOptions = 10;

    explicit PollCreatorView(QObject *parent = nullptr);

    bool canCreate() const { return m_canCreate; }

    /// Nothing happens for a row that isn't there, in the three of them.
    Q_INVOKABLE void setOption(int index, const QString &text);
    /// While there are fewer than `mostOptions`.
    Q_INVOKABLE void addOption();
    /// While there are more than `fewestOptions`.
    Q_INVOKABLE void removeOption(int index);

    /// Hands the poll over and ends the form; nothing happens while it can't be created. Options that are
    /// blank are left out.
    Q_INVOKABLE void createPoll();

Q_SIGNALS:
    void created(const orvane::MessengerPoll &poll);
    void canCreateChanged();

private:
    QStringList filledOptions() const;

    QProperty<bool> m_canCreate;
    QPropertyNotifier m_canCreateNotifier;
};

} // namespace orvane
