// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/ProcessEnd.h"

#include <QCoreApplication>

#include <cstdlib>
#include <utility>

namespace spotwell
{

namespace
{

// An exit handler reaches nothing but the process itself.
ProcessEnd* current = nullptr;

} // namespace

ProcessEnd::ProcessEnd(std::function<void()> ending) : ending_(std::move(ending))
{
    QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, &ProcessEnd::runOnce);
    current = this;
    (void)std::atexit(&ProcessEnd::runOnce);
}

ProcessEnd::~ProcessEnd()
{
    current = nullptr;
}

void ProcessEnd::runOnce()
{
    if (ProcessEnd* const end = std::exchange(current, nullptr))
        end->ending_();
}

} // namespace spotwell
