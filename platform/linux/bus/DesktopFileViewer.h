// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/FileViewer.h"
#include "platform/Log.h"
#include "platform/linux/WakeUp.h"
#include "platform/linux/bus/BusConnection.h"

#include <chrono>
#include <functional>
#include <thread>

namespace spotwell
{

/// Has `folder` opened with the desktop's default handler, on the main thread. Any thread.
void openFolderOnDesktop(const QString& folder);

/// Asks the desktop's file manager over the session bus (org.freedesktop.FileManager1, the freedesktop.org
/// "File Manager D-Bus Interface"); where none answers, the folder is opened with the default handler
/// instead.
class DesktopFileViewer final : public FileViewer
{
public:
    /// Opens a folder in its default handler. Called on a thread of this object's own, or, where there is
    /// none to be had, on the caller's.
    using FolderOpener = std::function<void(const QString& folder)>;

    /// `limit` is how long a file manager, which the bus may have to start first, is waited for.
    explicit DesktopFileViewer(SessionBus& bus, Log& log, FolderOpener openFolder = openFolderOnDesktop,
                               std::chrono::milliseconds limit = std::chrono::seconds{3});
    ~DesktopFileViewer() override;
    DesktopFileViewer(const DesktopFileViewer&) = delete;
    DesktopFileViewer& operator=(const DesktopFileViewer&) = delete;

    /// A file still being shown is given up for this one.
    void selectFile(const QString& file, const QString& folder) override;

private:
    void show(const QString& file, const QString& folder);
    void openFolderInstead(const QString& reason, const QString& folder);
    void stop();

    SessionBus& bus_;
    Log& log_;
    const FolderOpener openFolder_;
    const std::chrono::milliseconds limit_;
    WakeUp stopping_;
    std::thread worker_; // waits for the file manager, on a connection of its own
};

} // namespace spotwell
