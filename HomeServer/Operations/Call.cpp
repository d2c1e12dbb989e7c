// SPDX-License-Identifier: MIT
#include "HomeServer/Operations/Call.h"

#include "HomeServer/Events/EventHub.h"
#include "HomeServer/Options.h"
#include "HomeServer/Store/Commits.h"

#include <QDateTime>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

double Services::now() const {
    return options.clock ? options.clock()
                         : static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
}

void Work::tell(const QList<qint64> &users, const QJsonObject &event, const Caller &except) {
    afterwards([&hub = services.events, users, event, except] {
        for (const qint64 user : users)
            hub.send(user, event, user == except.userId ? except.deviceId : QString());
    });
}

void Work::run(const std::function<void()> &act, const std::function<void(bool committed)> &done) {
    m_afterwards.clear();
    services.commits.run(act);
    for (const auto &step : std::exchange(m_afterwards, {}))
        services.commits.afterwards([step](bool committed) {
            if (committed)
                step();
        });
    if (done)
        services.commits.afterwards(done);
}

QString Call::queryText(const char *name) const {
    return request.query.queryItemValue(QString::fromLatin1(name), QUrl::FullyDecoded);
}

} // namespace orvane::homeserver
