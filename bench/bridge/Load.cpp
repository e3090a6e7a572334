// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/bridge/Load.h"

#include "bench/ProcessFigures.h"
#include "bench/Report.h"
#include "bench/bridge/Forwarder.h"

#include <QTextStream>

#include <algorithm>
#include <array>
#include <poll.h>
#include <string>
#include <sys/socket.h>

namespace spotwell::bench
{

namespace
{

/// The least that the system keeps for a client, so that it soon falls behind.
constexpr int smallBuffer = 4096;
constexpr double kibPerMib = 1024;

/// Takes in what has waited for a client that did not read.
void readLate(const Socket& socket, LoadFigures& figures)
{
    constexpr int patienceMilliseconds = 5000;
    const std::string leftOut = "SPOTWELL: ";
    std::string text;
    std::array<char, 64 * 1024> bytes;
    while (figures.lateLines + figures.lateLeftOut < figures.posted) {
        pollfd entry{socket.descriptor(), POLLIN, 0};
        if (::poll(&entry, 1, patienceMilliseconds) <= 0)
            return;
        const ssize_t count = ::recv(socket.descriptor(), bytes.data(), bytes.size(), 0);
        if (count <= 0) {
            figures.lateDropped = true;
            return;
        }
        text.append(bytes.data(), static_cast<std::size_t>(count));
        for (auto end = text.find('\n'); end != std::string::npos; end = text.find('\n')) {
            if (text.compare(0, leftOut.size(), leftOut) == 0)
                figures.lateLeftOut += std::stoul(text.substr(leftOut.size()));
            else
                ++figures.lateLines;
            text.erase(0, end + 1);
        }
    }
}

} // namespace

QString LoadFigures::text() const
{
    QString text;
    QTextStream out(&text);
    out.setRealNumberNotation(QTextStream::FixedNotation);
    out.setRealNumberPrecision(1);
    const auto mib = [](double kib) { return kib / kibPerMib; };
    out << "  posted " << posted << ", heard by all " << readers << " readers in order " << heardByAll
        << ", readers that heard something else " << failed << '\n'
        << "  to the last reader, ms: p50 " << quantile(latencies, 0.5) / 1e3 << ", p99 "
        << quantile(latencies, 0.99) / 1e3 << ", max " << quantile(latencies, 1.0) / 1e3 << '\n'
        << "  CPU a spot, us: " << cpu << '\n'
        << "  resident, MiB: " << mib(resident.front()) << " at the first spot, "
        << mib(resident[resident.size() / 2]) << " half-way, " << mib(resident.back()) << " at the end, "
        << mib(static_cast<double>(peak)) << " at most\n"
        << "  the one that did not read: " << lateLines << " lines when it did, told of " << lateLeftOut
        << " left out" << (lateDropped ? ", dropped\n" : "\n");
    return text;
}

LoadFigures runLoad(const Command& command, std::size_t readers, const Traffic& traffic)
{
    Forwarder forwarder(command.program, command.arguments);
    SpotSource source(forwarder.busAddress());
    const Socket late(forwarder.port(), smallBuffer);
    late.logIn();
    TelnetClients clients(source, forwarder.port(), readers);

    LoadFigures figures;
    figures.readers = readers;
    const double cpu = cpuSecondsOf(forwarder.process());
    const auto noteMemory = [&] {
        figures.resident.push_back(static_cast<double>(residentOf(forwarder.process())));
    };
    (void)postSpots(source, clients, traffic, noteMemory);
    noteMemory();
    figures.posted = source.count();
    figures.heardByAll = clients.heardByAll();
    figures.failed = clients.failed();
    for (std::size_t i = 0; i < figures.heardByAll; ++i)
        figures.latencies.push_back(clients.latencies()[i].last);
    figures.cpu = (cpuSecondsOf(forwarder.process()) - cpu) * 1e6 /
                  static_cast<double>(std::max<std::size_t>(1, figures.posted));
    readLate(late, figures);
    figures.peak = memoryOf(forwarder.process()).peak;
    return figures;
}

} // namespace spotwell::bench
