// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/UrlSession.h"

#include <QString>

#include <memory>

namespace spotwell
{

/// Where this build's web module is, for a program whose executable is in `programDirectory`.
[[nodiscard]] QString webModulePath(const QString& programDirectory);

/// A URL session (QtUrlSession) of the web module at `path`, which stays loaded. None when it cannot be
/// loaded; then `error` says why. From any thread; waits for the disk.
[[nodiscard]] std::unique_ptr<UrlSession> makeUrlSession(const QString& path,
                                                         const UrlSessionConfiguration& configuration,
                                                         const QString& userAgent, QString& error);

/// The module's one function. What it returns the caller owns.
inline constexpr const char* webModuleFunction = "spotwellMakeUrlSession";
using WebModuleFunction = UrlSession* (*)(const UrlSessionConfiguration& configuration,
                                          const QString& userAgent);

} // namespace spotwell
