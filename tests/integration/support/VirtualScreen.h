// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/support/bus/ChildProcess.h"

#include <QImage>
#include <QString>
#include <QTemporaryDir>

#include <csignal>
#include <optional>

namespace spotwell
{

/// An X server of the test's own, 1024 by 768 pixels that nobody sees.
class VirtualScreen
{
public:
    /// Starts it and waits until it takes connections; throws when there is no Xvfb.
    VirtualScreen();
    ~VirtualScreen();
    VirtualScreen(const VirtualScreen&) = delete;
    VirtualScreen& operator=(const VirtualScreen&) = delete;

    /// What DISPLAY has to be for its clients.
    [[nodiscard]] QString display() const { return display_; }
    /// Lets it hang, and go on.
    void stop() { server_->signal(SIGSTOP); }
    void resume() { server_->signal(SIGCONT); }
    /// What it shows now.
    [[nodiscard]] QImage picture() const;
    /// A file in its temporary directory.
    [[nodiscard]] QString filePath(const QString& name) const { return directory_.filePath(name); }

private:
    QTemporaryDir directory_;
    std::optional<ChildProcess> server_;
    QString display_;
};

} // namespace spotwell
