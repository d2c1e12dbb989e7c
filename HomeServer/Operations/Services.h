// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <functional>

class QNetworkAccessManager;

namespace orvane::homeserver {

class Commits;
class Database;
class EventHub;
class FileStore;
class HashQueue;
class LoginThrottle;
class ModelEndpoint;
class RobotRunner;
class Visitors;
struct Brakes;
struct Options;

// What the operations work with; everything lives as long as the server and belongs to its thread.
struct Services {
    const Options &options;
    Database &database;
    EventHub &events;
    LoginThrottle &throttle;
    RobotRunner &robots;
    FileStore &files;
    QNetworkAccessManager &network;
    ModelEndpoint &model;
    std::function<QString()> httpBase; // "http://address:port", as clients reach this server
    HashQueue &hashing;
    Visitors &visitors;
    Commits &commits;
    const QStringList &features; // what this server announces
    Brakes &brakes;

    double now() const; // Unix seconds
};

} // namespace orvane::homeserver
