// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

#include <functional>

namespace spotwell
{

/// Takes note of a call, so that a test can see in one order what reaches several fakes.
using Note = std::function<void(const QString&)>;

/// The note of a fake that nobody asked for one.
inline void ignore(const QString&) {}

} // namespace spotwell
