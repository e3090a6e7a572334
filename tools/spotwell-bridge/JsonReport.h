// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"
#include "tools/spotwell-bridge/LoggerOnBus.h"
#include "tools/spotwell-bridge/Notification.h"

#include <QByteArray>
#include <QString>

namespace spotwell::bridge
{

/// What `--print json` shows, one object each, without a line feed. Times are those of the arrival.
[[nodiscard]] QByteArray notificationJson(const Notification& notification, TimePoint received);
[[nodiscard]] QByteArray commandJson(const QString& text, TimePoint received);
/// `telnet` is where telnet clients are served; empty when they are not.
[[nodiscard]] QByteArray readyJson(const LoggerIdentity& identity, const QString& telnet, bool queued);

} // namespace spotwell::bridge
