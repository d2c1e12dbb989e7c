// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QTimer>

#include <functional>

namespace orvane::homeserver {

class Database;

// Commits in groups: what comes in one turn of the event loop shares one transaction, and so one sync of the
// disk. Each piece of work stands or falls by itself.
class Commits {
public:
    // Called when the group is on the disk, with false when it could not be brought there.
    using Step = std::function<void(bool committed)>;

    explicit Commits(Database &database);
    // Commits what is left; no step is called any more.
    ~Commits();
    Q_DISABLE_COPY_MOVE(Commits)

    // Runs `act` as one piece. What it throws passes through, with the piece undone.
    void run(const std::function<void()> &act);

    // A step for the end of the group that the last piece belongs to.
    void afterwards(Step step) { m_steps.append(std::move(step)); }

    // The group takes something away: no log may keep it either.
    void scrubLog() { m_scrub = true; }

    // Brings the group to the disk now.
    void flush();

private:
    bool commit();

    Database &m_database;
    QTimer m_turn;
    QList<Step> m_steps;
    bool m_open = false;
    bool m_scrub = false;
};

} // namespace orvane::homeserver
