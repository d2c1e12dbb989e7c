// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// What can be told of a conversation without understanding it. Pure functions over plain texts, Russian and
// English.
namespace orvane::homeserver {

struct Line {
    QString speaker;
    QString text;
};

struct Summary {
    QString text;          // the sentences that share most of their words with the rest, in their order
    QStringList keyPoints; // of the same kind, the next ones
    QStringList decisions; // sentences that say something was decided
    QStringList tasks;     // sentences that ask for something to be done
};

Summary summarize(const QList<Line> &lines);

// Up to three short answers that fit the kind of the text: question, thanks, greeting, request, other.
QStringList shortReplies(const QString &text);

// Names and numbers in a text: capitalised words inside sentences, and amounts with their sign or unit.
struct Entity {
    QString type; // "name", "number"
    QString name;
};
QList<Entity> entitiesIn(const QString &text);

bool looksRussian(const QString &text);

} // namespace orvane::homeserver
