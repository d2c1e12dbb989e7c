// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/UserNotifications.h"

#include <QList>

#include <memory>

namespace orvane {

/// Notes what is to be shown; the notes outlive the desktop that a bridge owns.
class RecordingNotifications : public UserNotifications {
public:
    struct Added {
        QString identifier;
        NotificationContent content;
    };
    struct Notes {
        QList<Added> added;
        int authorizations = 0;
    };

    explicit RecordingNotifications(std::shared_ptr<Notes> notes)
        : m_notes(std::move(notes)) {}

    void requestAuthorization() override { ++m_notes->authorizations; }
    void add(const QString &identifier, const NotificationContent &content) override {
        m_notes->added.append({identifier, content});
    }

private:
    std::shared_ptr<Notes> m_notes;
};

} // namespace orvane
