// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>

#include <chrono>

namespace spotwell
{

/// Runs the event loop until `condition` holds; false when it does not within the deadline.
template <typename Condition>
bool waitUntil(Condition condition, std::chrono::milliseconds deadline = std::chrono::seconds{60})
{
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        QEventLoop().processEvents(QEventLoop::AllEvents, 5);
        QThread::usleep(200);
    }
    return true;
}

} // namespace spotwell
