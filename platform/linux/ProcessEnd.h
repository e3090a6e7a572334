// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QSemaphore>
#include <QtGlobal>

#include <functional>

class QString;

namespace spotwell
{

/// Runs something once, on the main thread, before the process ends: when the application is about to quit,
/// or else when the process exits without having asked it, as Qt makes it do where the X server has gone, or
/// when Qt says that the Wayland compositor has gone, after which it exits at once. One for the process;
/// needs a QCoreApplication that lives longer. Main thread.
class ProcessEnd
{
public:
    explicit ProcessEnd(std::function<void()> ending);
    ~ProcessEnd();
    ProcessEnd(const ProcessEnd&) = delete;
    ProcessEnd& operator=(const ProcessEnd&) = delete;

private:
    static void takeMessage(QtMsgType type, const QMessageLogContext& context, const QString& message);
    static void runOnce();
    void runOnMainThread();

    std::function<void()> ending_;
    bool hasBegun_ = false; // main thread
    /// Free once the ending has run.
    QSemaphore ended_;
    /// Where Qt's messages went before.
    QtMessageHandler messages_ = nullptr;
};

} // namespace spotwell
