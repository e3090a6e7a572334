// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>

#include <chrono>

namespace spotwell
{

/// Lets the window system work until `condition` holds; false when it does not within ten seconds.
template <typename Condition>
bool waitUntil(const Condition& condition)
{
    constexpr std::chrono::seconds deadline{10};
    QElapsedTimer elapsed;
    elapsed.start();
    while (!condition()) {
        if (std::chrono::milliseconds(elapsed.elapsed()) > deadline)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return true;
}

} // namespace spotwell
