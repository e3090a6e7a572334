// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/support/bus/ChildProcess.h"
#include "tests/support/bus/PrivateBus.h"

#include <QString>
#include <QStringList>

#include <deque>

namespace spotwell
{

/// A process on the other side of the bus: a logger, a file manager or a listener, as its commands say
/// (bus_peer.cpp). What it sees it tells in lines of fields.
class BusPeer
{
public:
    explicit BusPeer(const PrivateBus& bus);

    /// Runs a command; it is done, and known to the bus, when this returns.
    void command(const QStringList& fields);
    /// The fields of the next thing it saw; empty when nothing more comes.
    QStringList next();
    /// How many of the things it saw so far begin with `kind`; they are not taken.
    int count(const QString& kind);
    /// Lets the process hang, and go on.
    void stop();
    void resume();
    /// Ends it as a crash would.
    void kill();

private:
    static QStringList split(const std::string& line);

    ChildProcess process_;
    std::deque<QStringList> seen_;
};

} // namespace spotwell
