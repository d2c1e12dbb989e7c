// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>
#include <QtGlobal>

namespace orvane::homeserver {

class Database;
class Router;
class Work;

constexpr auto echoName = "bot_echo";
constexpr auto assistantName = "ai_orvanetalk";

// Announces that the assistant is a contact of everybody's.
void addRobots(Router &router);

// Makes the accounts of the robots and the Lobby where they are missing.
void createBuiltIns(Work &work);

// The robots everybody has a direct chat with.
QList<qint64> builtInRobots(Database &database);

} // namespace orvane::homeserver
