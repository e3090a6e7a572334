// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// The whole road of a cluster line: a node's bytes in reads of any size, decoded, cut into lines, shown,
// passed on and answered, with the node gone, silent or back again in between.

#include "cluster/ClusterSession.h"
#include "cluster/Supervision.h"
#include "fuzz/Check.h"
#include "fuzz/Input.h"
#include "platform/linux/IcuTextConverter.h"
#include "tests/cluster/FakeClusterHost.h"
#include "tests/fakes/FakeServices.h"
#include "tests/fakes/FakeSocketStreams.h"
#include "util/ConsoleText.h"

#include <QByteArray>

#include <algorithm>
#include <array>

namespace
{

using namespace spotwell;
using namespace Qt::Literals::StringLiterals;

/// What one read of the session takes at most, and how many of these end the connection.
constexpr qsizetype wholeBuffer = 16383;
constexpr int floodReads = 6;
constexpr qsizetype mostWaitingReads = 16;
const QString lineEntry = u"teln "_s;

/// The lines of one read, made in another way than the program's.
QStringList linesOf(const QByteArray& read)
{
    const QByteArray bytes(read.constData()); // ends at the first NUL
    // The letter in front keeps the decoder from taking a byte order mark away.
    const QString text =
        bytes.isValidUtf8() ? QString::fromUtf8('x' + bytes).sliced(1) : QString::fromLatin1(bytes);
    QStringList lines;
    QString line;
    const auto finish = [&] {
        if (!line.isEmpty())
            lines.append(line);
        line.clear();
    };
    for (const QChar c : text) {
        if (c == u'\n')
            finish();
        else if (c != u'\r' && c != u'\a')
            line.append(c);
    }
    finish();
    return lines;
}

/// A cluster session on fakes, and what is expected of it.
class Road
{
public:
    explicit Road(unsigned options)
    {
        host_.password = (options & 1U) != 0 ? u"secret"_s : QString();
        host_.callsign = (options & 2U) != 0 ? QString() : u"N0CALL"_s;
        host_.reconnect = (options & 4U) == 0;
        acceptsWrites_ = (options & 8U) == 0;
        // What stands behind a NUL costs no time, so that floods may be tried often, and long lines now and
        // then.
        fill_ = options == 0xA5 ? ' ' : '\0';
        open();
    }

    void read(const QByteArray& bytes);
    void readWholeBuffer(const QByteArray& start) { read(start.leftJustified(wholeBuffer, fill_, true)); }
    void treat();
    void pass(Seconds span);
    void happen(unsigned what);
    void finish();

private:
    void open();
    void note(const QByteArray& bytes);
    void checkHeld();
    void checkConsole();
    void checkSent(const FakeConnection& connection) const;
    [[nodiscard]] FakeConnection& node() { return sockets_.last(); }

    FakeClock clock_;
    FakeMainQueue mainQueue_{clock_};
    FakeClusterHost host_;
    FakeSocketStreams sockets_;
    FakeLog log_;
    const IcuTextConverter& converter_ = sharedConverter();
    ClusterSession session_{host_, sockets_, mainQueue_, clock_, converter_, log_};
    Supervision supervision_{host_, session_, clock_, log_};
    bool acceptsWrites_ = true;
    char fill_ = '\0';

    QStringList expected_;
    std::size_t connections_ = 0;
    qsizetype received_ = 0;
    int wholeReads_ = 0;

    static const IcuTextConverter& sharedConverter()
    {
        static const IcuTextConverter converter;
        return converter;
    }
};

void Road::open()
{
    if (session_.hasStreams())
        return;
    session_.openTelnetConnection();
    node().inputEvent(StreamEvent::openCompleted);
    node().spaceAvailable = acceptsWrites_;
}

/// Hands `bytes` to the session, unless it wants none now.
void Road::read(const QByteArray& bytes)
{
    if (bytes.isEmpty() || !session_.hasStreams() || node().held)
        return;
    if (connections_ != sockets_.connections.size()) {
        connections_ = sockets_.connections.size();
        received_ = 0;
        wholeReads_ = 0;
    }
    received_ += bytes.size();
    wholeReads_ += bytes.size() == wholeBuffer ? 1 : 0;
    expected_ += linesOf(bytes);
    node().receive(bytes);
    check(session_.bytesReceived() == received_, "all bytes are counted");
    check(session_.hasStreams() == (wholeReads_ < floodReads),
          "a flood, and nothing else, ends the connection");
    check(session_.hasStreams() || !host_.reconnect, "a node that floods is not called again");
    checkHeld();
}

/// Lets everything be treated that was read.
void Road::treat()
{
    host_.buffer.runPending();
    mainQueue_.runPending();
    checkHeld();
    checkConsole();
}

void Road::checkHeld()
{
    const auto waiting = static_cast<qsizetype>(host_.buffer.pendingCount());
    check(waiting <= mostWaitingReads, "the reads that wait are bounded");
    check(!session_.hasStreams() || node().held == (waiting == mostWaitingReads),
          "the node waits while they do");
}

void Road::pass(Seconds span)
{
    mainQueue_.advance(span);
    supervision_.loginTimeoutTimer();
    supervision_.reconnectTimer();
    if (session_.hasStreams())
        node().spaceAvailable = acceptsWrites_;
}

void Road::happen(unsigned what)
{
    switch (what) {
    case 0:
        node().inputEvent(StreamEvent::endEncountered);
        break;
    case 1:
        node().error = u"Connection reset by peer"_s;
        node().outputEvent(StreamEvent::errorOccurred);
        break;
    case 2:
        node().inputEvent(StreamEvent::hasBytesAvailable); // there are none: the end
        break;
    case 3:
        node().readError = -1;
        node().inputEvent(StreamEvent::hasBytesAvailable);
        node().readError = 0;
        break;
    case 4:
        if (session_.hasStreams())
            session_.closeTelnetConnection();
        break;
    case 5:
        open();
        break;
    default:
        node().outputEvent(static_cast<int>(what));
    }
}

/// Every line is shown once, in order, and among them every spot is passed on.
void Road::checkConsole()
{
    ConsoleText console;
    QStringList shown;
    for (const QString& entry : std::as_const(host_.console)) {
        console.append(entry);
        check(console.length() < ConsoleText::trimmingThreshold ||
                  entry.size() >= ConsoleText::trimmingTarget,
              "the console is bounded");
        if (entry.startsWith(lineEntry))
            shown.append(entry.sliced(lineEntry.size()));
    }
    check(shown == expected_, "every line is shown once, in order");
    expected_.removeIf([](const QString& line) { return line.size() < 75 || line.first(6) != u"DX de "; });
    check(host_.spots == expected_, "every spot is passed on once, in order");
    check(host_.nodes.size() == host_.spots.size() &&
              host_.nodes.count(host_.dxcluster) == host_.nodes.size(),
          "every spot has its node");
    host_.console.clear();
    host_.spots.clear();
    host_.nodes.clear();
    expected_.clear();
}

/// Nothing that a node says makes the program say anything but these.
void Road::checkSent(const FakeConnection& connection) const
{
    check(connection.written.isEmpty() || connection.written.endsWith('\n'), "whole lines are sent");
    QByteArrayList sent = connection.written.split('\n');
    sent.removeLast();
    for (const QByteArray& line : std::as_const(sent))
        check(line.isEmpty() || line == "quit" || (line == "N0CALL" && !host_.callsign.isEmpty()) ||
                  (line == "secret" && !host_.password.isEmpty()),
              "nothing else is ever sent");
}

void Road::finish()
{
    treat();
    pass(Seconds{3});
    check(mainQueue_.timerCount() == 0, "every answer is given");
    for (const auto& connection : sockets_.connections)
        checkSent(*connection);
}

/// A step is a byte, its three upper bits what it does, and the bytes that it needs.
void step(Road& road, Input& input)
{
    const unsigned op = input.byte();
    const unsigned argument = op & 0x1FU;
    switch (op >> 5U) {
    case 0:
    case 1:
    case 2:
    case 3:
        return road.read(input.bytes(op + 1).toByteArray());
    case 4:
        return road.treat();
    case 5:
        return road.pass(Seconds{0.5 * argument * argument});
    case 6:
        return road.happen(argument);
    default:
        if (argument == 0x1F)
            return road.readWholeBuffer(input.bytes(8).toByteArray());
        return road.treat();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    Input input(data, size);
    Road road(input.byte());
    while (!input.isEmpty())
        step(road, input);
    road.finish();
    return 0;
}
