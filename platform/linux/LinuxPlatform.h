// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Platform.h"

#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace spotwell
{

/// All of the platform's services as Linux has them. Made on the main thread, after the application object.
class LinuxPlatform
{
public:
    struct Prepared {
        /// Of a session bus that hangs; empty when the address is the environment's to tell.
        std::string busAddress;
        /// Reads the font configuration; to be joined once the application object is made. No thread where
        /// none can be had.
        std::thread fonts;
    };
    /// What has to be so before anything else happens in the process: the standard streams are taken, new
    /// files are the user's alone, a peer that has gone is an error and no signal, the toolkit's messages go
    /// to the log, and the application object, to be made next, waits for events in the cheapest way and does
    /// not find a session bus that hangs. Changes the environment, so no other thread is to run yet.
    [[nodiscard]] static Prepared prepareProcess();
    /// Where the diagnostics logs of this user go.
    [[nodiscard]] static QString logDirectory();

    /// `version` is the program's own, as web services are told; `busAddress` is what prepareProcess() gave.
    LinuxPlatform(const QString& version, std::string busAddress);
    ~LinuxPlatform();
    LinuxPlatform(const LinuxPlatform&) = delete;
    LinuxPlatform& operator=(const LinuxPlatform&) = delete;

    [[nodiscard]] Platform services();
    /// From now on the process ends in order: by SIGTERM, SIGINT or SIGHUP, with the desktop session, by the
    /// quit command or the last window, and where the display server has gone. `ending` runs once, on the
    /// main thread; behind it the settings are saved and whatever waits for another program is let go. Then
    /// the process is gone within a second, also where something that cannot be interrupted (a proxy look-up,
    /// a display server that hangs) would hold its ordinary end.
    void onEnd(std::function<void()> ending);

private:
    void prepareToEnd();

    struct Parts;
    std::unique_ptr<Parts> parts_;
};

} // namespace spotwell
