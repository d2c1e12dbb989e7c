// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/Operations/Call.h"

namespace orvane::homeserver {

// Who may use a route.
enum class Access {
    Open,     // anybody
    SignedIn, // whoever has a valid token
};

// One row of the interface: a method, a path whose segments in braces match anything, and what it does.
struct Route {
    QByteArray method;
    QStringList pattern;
    Access access = Access::SignedIn;
    Operation operation;
    SlowOperation slowOperation; // instead of the above
    bool carriesFile = false;
};

// The tables of the interface. Paths that begin with "/" are complete; others stand under
// "/api/messenger/".
class Router {
public:
    struct Match {
        const Route *route = nullptr; // null: no such path, or no such method on it
        bool pathKnown = false;
        QHash<QString, QString> parts;
    };

    void add(const char *method, const char *path, Operation operation, Access access = Access::SignedIn);
    void addSlow(const char *method, const char *path, SlowOperation operation,
                 Access access = Access::SignedIn);
    // One whose request carries a file.
    void addUpload(const char *method, const char *path, Operation operation,
                   Access access = Access::SignedIn);
    // What a frame of this type from an event socket does; its answer goes nowhere.
    void addFrame(const char *type, const Operation &operation);

    // Tells clients by a name that what is added here goes beyond what every home server does.
    void announce(const char *feature) { m_features.append(QString::fromLatin1(feature)); }

    // The earliest row that fits.
    Match find(const QByteArray &method, const QStringList &segments) const;
    const Operation *frame(const QString &type) const;

    const QStringList &features() const { return m_features; }

private:
    QList<Route> m_routes;
    QHash<QString, Operation> m_frames;
    QStringList m_features;
};

} // namespace orvane::homeserver
