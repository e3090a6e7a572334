// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/support/bus/BusPeer.h"

#include <QByteArray>
#include <QUrl>

#include <algorithm>
#include <csignal>
#include <stdexcept>

namespace spotwell
{

// The peer is not under test, and QtDBus hands its data between threads in ways a sanitizer cannot see.
BusPeer::BusPeer(const PrivateBus& bus)
    : process_({BUS_PEER, bus.address()}, {"TSAN_OPTIONS=report_bugs=0", "ASAN_OPTIONS=detect_leaks=0"})
{
    command({QStringLiteral("sync")});
}

void BusPeer::command(const QStringList& fields)
{
    QByteArrayList encoded;
    for (const QString& field : fields)
        encoded.append(QUrl::toPercentEncoding(field));
    process_.writeLine(encoded.join('\t').toStdString());
    while (const auto line = process_.readLine()) {
        if (*line == "ok")
            return;
        seen_.push_back(split(*line));
    }
    throw std::runtime_error("the peer does not answer");
}

QStringList BusPeer::next()
{
    if (seen_.empty()) {
        const auto line = process_.readLine();
        return line ? split(*line) : QStringList{};
    }
    const QStringList first = seen_.front();
    seen_.pop_front();
    return first;
}

int BusPeer::count(const QString& kind)
{
    // The first brings what is under way to the peer, which sees it before it reads the second.
    command({QStringLiteral("sync")});
    command({QStringLiteral("sync")});
    return static_cast<int>(std::count_if(
        seen_.begin(), seen_.end(), [&kind](const QStringList& fields) { return fields.first() == kind; }));
}

void BusPeer::stop()
{
    process_.signal(SIGSTOP);
}

void BusPeer::resume()
{
    process_.signal(SIGCONT);
}

void BusPeer::kill()
{
    process_.signal(SIGKILL);
    process_.wait();
}

QStringList BusPeer::split(const std::string& line)
{
    QStringList fields;
    for (const QByteArray& field : QByteArray::fromStdString(line).split('\t'))
        fields.append(QUrl::fromPercentEncoding(field));
    return fields;
}

} // namespace spotwell
