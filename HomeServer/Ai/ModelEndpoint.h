// SPDX-License-Identifier: MIT
#pragma once

#include <QFuture>
#include <QList>
#include <QString>

class QNetworkAccessManager;

namespace orvane::homeserver {

struct ModelMessage {
    QString role; // "system", "user" or "assistant"
    QString content;
};

// A language model behind an OpenAI-compatible interface, where the server was given one.
class ModelEndpoint {
public:
    // `base` is the address in front of "/chat/completions"; empty: there is no model.
    ModelEndpoint(const QString &base, QNetworkAccessManager &network);

    bool isThere() const { return !m_base.isEmpty(); }

    // What the model says; a null text when there is none, when it is asked nothing, fails or takes more than
    // 30 s.
    QFuture<QString> ask(const QList<ModelMessage> &messages, double temperature = 0.3);

private:
    QString m_base;
    QNetworkAccessManager &m_network;
};

} // namespace orvane::homeserver
