// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"

#include <QString>

#include <utility>
#include <variant>
#include <vector>

namespace spotwell::bridge
{

/// A value of a notification's dictionary; `monostate` for one of a type that the contract does not know.
using Value = std::variant<std::monostate, QString, double, TimePoint>;

/// A notification as it came, its dictionary in the order it was sent in.
struct Notification {
    QString name;
    QString object;
    std::vector<std::pair<QString, Value>> userInfo;
};

} // namespace spotwell::bridge
