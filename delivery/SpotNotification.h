// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "delivery/Spot.h"
#include "platform/NotificationCenter.h"

#include <functional>

namespace spotwell
{

/// The console line of a spot, in the columns of a cluster's own "DX de" lines: 80 characters with a
/// four-letter service, and the park reference behind them. An absent text counts as empty, an absent
/// frequency as 0.0 kHz, and an absent time leaves its five columns blank.
[[nodiscard]] QString spotConsoleLine(const Spot& spot);

/// The user information of the spot notification: a key for each value that is there. The spotter is sent
/// when it is present, every other text when it is not empty; the service is never sent.
[[nodiscard]] UserInfo spotUserInfo(const Spot& spot);

/// Hands the spots of the web feeds on: to the console and, as the spot notification, to whoever listens.
class SpotNotification
{
public:
    SpotNotification(std::function<void(const QString&)> appendText, NotificationCenter& notificationCenter);

    /// Shows `spot` in the console and posts it. Main thread.
    void sendSpotCall(const Spot& spot);

private:
    std::function<void(const QString&)> appendText_;
    NotificationCenter& notificationCenter_;
};

} // namespace spotwell
