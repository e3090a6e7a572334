// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "cluster/ClusterSession.h"
#include "platform/linux/IcuTextConverter.h"
#include "tests/cluster/FakeClusterHost.h"
#include "tests/fakes/FakeServices.h"
#include "tests/fakes/FakeSocketStreams.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

namespace spotwell
{

/// What the whole receive buffer takes.
inline constexpr int wholeBuffer = 16383;

/// A cluster session on fakes.
struct ClusterSessionFixture : testing::Test {
    FakeConnection& open()
    {
        session.openTelnetConnection();
        return sockets.last();
    }
    /// An open connection whose streams have said so.
    FakeConnection& openCompleted()
    {
        FakeConnection& node = open();
        node.inputEvent(StreamEvent::openCompleted);
        node.outputEvent(StreamEvent::openCompleted);
        log.lines.clear();
        host.console.clear();
        return node;
    }
    void treat()
    {
        host.buffer.runPending();
        mainQueue.runPending();
    }
    /// The lines that reached the console, as the node sent them.
    QStringList heard()
    {
        treat();
        QStringList lines;
        for (const QString& entry : host.console) {
            if (entry.startsWith(QLatin1String("teln ")))
                lines.append(entry.mid(5));
        }
        return lines;
    }

    FakeClock clock;
    FakeMainQueue mainQueue{clock};
    FakeClusterHost host;
    FakeSocketStreams sockets;
    FakeLog log;
    IcuTextConverter converter;
    ClusterSession session{host, sockets, mainQueue, clock, converter, log};
};

} // namespace spotwell
