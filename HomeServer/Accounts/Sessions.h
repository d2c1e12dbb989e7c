// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/Operations/Call.h"

#include <optional>

// Devices and the tokens that belong to them.
namespace orvane::homeserver {

constexpr int maxDevices = 10;

struct Device {
    QString id;
    QString name;
    QString platform;
};

// Whom the token stands for, if it is one of ours.
std::optional<Caller> callerOf(Services &services, const QByteArray &token);

// The device that a sign-in or registration names; one without an id gets a fresh one.
Device deviceOf(const QJsonObject &body);

// Makes the device known, or refreshes it. Beyond maxDevices the one unseen for longest is revoked.
void rememberDevice(Work &work, qint64 userId, const Device &device);

// A fresh token for a known device; earlier tokens of the device die, and their event
// sockets close.
QByteArray issueToken(Work &work, qint64 userId, const QString &deviceId);

// Ends a device: its tokens die and its event sockets close. False if there is none.
bool revokeDevice(Work &work, qint64 userId, const QString &deviceId);

} // namespace orvane::homeserver
