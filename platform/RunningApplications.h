// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

#include <optional>
#include <vector>

namespace spotwell
{

/// What an application says of itself.
struct BundleInformation {
    /// The short version text, "6.45" say; absent when the application gives none.
    std::optional<QString> shortVersion;
};

/// An application that runs in the user's session.
struct RunningApplication {
    /// The name shown to the user.
    QString displayName;
    /// Absent when it could not be read.
    std::optional<BundleInformation> information;
    /// Where the platform reaches the application; of no meaning outside the platform layer.
    QString address;
};

/// The session's running applications.
class RunningApplications
{
public:
    virtual ~RunningApplications() = default;
    /// The list as it is now, in the platform's own order. Returns within 250 ms whatever the applications
    /// and the bus do; an application that did not answer in time is left out. From any thread.
    virtual std::vector<RunningApplication> runningApplications() = 0;
};

} // namespace spotwell
