// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/spotwell-bridge/Alarm.h"

#include <QByteArray>
#include <QString>

namespace spotwell::bridge
{

/// The service manager that started the program, told how the program is by the datagrams that sd_notify(3)
/// describes. One that does not read them is not waited for. Belongs to the thread of its event loop.
class ServiceManager
{
public:
    /// `address` is the value of NOTIFY_SOCKET: a path, or a name of Linux's abstract sockets behind an "@".
    /// With any other nobody is told.
    explicit ServiceManager(QByteArray address);

    /// What the program does, for people; lost when it is not taken at once.
    void status(const QString& text);
    /// The program does its work; told again once a second until it is taken, for the manager waits for it.
    void ready();
    /// The program ends.
    void stopping();

private:
    bool send(const QByteArray& state) const;

    const QByteArray address_;
    Alarm again_;
};

} // namespace spotwell::bridge
