// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"

#include <QString>

#include <utility>
#include <variant>
#include <vector>

namespace spotwell
{

/// A value of a notification's user information: a text, a number or a point in time.
using UserInfoValue = std::variant<QString, double, TimePoint>;

/// A notification's user information, in the order its keys were added. No key stands twice.
using UserInfo = std::vector<std::pair<QString, UserInfoValue>>;

/// The notifications that every program of the user's session can receive.
class NotificationCenter
{
public:
    virtual ~NotificationCenter() = default;
    /// Posts at once and waits for nobody; notifications leave in the order of the calls. A notification that
    /// cannot be carried (no bus) is lost. From any thread.
    virtual void post(const QString& name, const QString& object, const UserInfo& userInfo) = 0;
};

} // namespace spotwell
