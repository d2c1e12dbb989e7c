// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <functional>

class QNetworkAccessManager;
class QThreadPool;

namespace orvane::homeserver {

class Database;
class EventHub;
class FileStore;
class LoginThrottle;
class ModelEndpoint;
class RobotRunner;
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
    QThreadPool &workers;              // for what takes long and touches nothing of the above
    const QStringList &features;       // what this server announces
    Brakes &brakes;

    double now() const; // Unix seconds
};

} // namespace orvane::homeserver
