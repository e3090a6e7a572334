// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "cluster/ClusterSession.h"

#include "cluster/TextDecoding.h"
#include "util/StringAdditions.h"

#include <span>

namespace spotwell
{

namespace
{

constexpr std::uint32_t telnetPort = 23;
constexpr std::int32_t floodReads = 6;

// How the log and the console show a text that is not there.
QString shownText(const QString& text)
{
    return text.isNull() ? QStringLiteral("(null)") : text;
}

} // namespace

std::uint32_t clusterPort(const QString& text)
{
    const auto port = static_cast<std::uint32_t>(static_cast<std::uint64_t>(integerValue(text)));
    return port == 0 ? telnetPort : port;
}

ClusterSession::ClusterSession(ClusterHost& host, SocketStreams& sockets, MainQueue& mainQueue,
                               const Clock& clock, const TextConverter& converter, Log& log)
    : host_(host),
      sockets_(sockets),
      mainQueue_(mainQueue),
      clock_(clock),
      converter_(converter),
      log_(log),
      lineAssembly_(host, *this, mainQueue, log),
      readBuffer{}
{
}

void ClusterSession::openTelnetConnection()
{
    bytesReceivedOnThisConnection = 0;
    _lastRecievedMessageTime = clock_.now();
    log_.line(QStringLiteral("openTelnetConnection"));
    host_.appendText(QStringLiteral("openTelnetConnection"));
    const QString hostName = host_.dxclusterText();
    {
        const std::lock_guard guard(hostNameMutex_);
        _telnetHostName = hostName;
    }
    const std::uint32_t port = clusterPort(host_.portText());
    const auto shownPort = static_cast<std::int32_t>(port);

    StreamPair pair = sockets_.createPairWithSocketToHost(hostName, port);
    if (!pair.input || !pair.output) {
        log_.line(QStringLiteral("Unable to reach server DXCluster Node:%1 on Port:%2")
                      .arg(hostName, QString::number(shownPort)));
        host_.setConnected(false);
        return;
    }
    iStream = std::move(pair.input);
    iStream->setDelegate(this);
    iStream->open();
    oStream = std::move(pair.output);
    oStream->setDelegate(this);
    oStream->open();
    if (waitingReads_ >= mostWaitingReads)
        iStream->holdEvents(true);
    _bufferOverRunCount = 0;
    log_.line(QStringLiteral("Node:%1 Opened on Port:%2 istream status:[%3] ostream status:[%4]")
                  .arg(hostName, QString::number(shownPort),
                       QString::number(static_cast<int>(iStream->status())),
                       QString::number(static_cast<int>(oStream->status()))));
    _sessionStartupTime = clock_.now();
    host_.setConnected(true);
    loggedIn = false;
}

QString ClusterSession::telnetHostName() const
{
    const std::lock_guard guard(hostNameMutex_);
    return _telnetHostName;
}

void ClusterSession::closeTelnetConnection()
{
    host_.threadCheckWarning();
    sendTelnet(QStringLiteral("quit\n"));
    log_.line(QStringLiteral("closeTelnetConnection"));
    host_.appendText(QStringLiteral("closeTelnetConnection"));
    if (oStream) {
        oStream->close();
        oStream.reset();
    }
    if (iStream) {
        iStream->close();
        iStream.reset();
    }
    host_.setConnected(false);
}

void ClusterSession::sendTelnet(const QString& text)
{
    if (!oStream || !oStream->hasSpaceAvailable())
        return;
    const QString sent = text.left(text.indexOf(QChar(u'\0')));
    const QByteArray bytes = sent.toUtf8();
    log_.line(QStringLiteral("DXClusterController:sendTelnet:[%1]characters:%2")
                  .arg(QString::number(bytes.size()), sent));
    if (!bytes.isEmpty())
        oStream->write({bytes.constData(), static_cast<std::size_t>(bytes.size())});
}

void ClusterSession::handleEvent(Stream& stream, int eventCode)
{
    switch (static_cast<StreamEvent>(eventCode)) {
    case StreamEvent::none:
        break;
    case StreamEvent::openCompleted:
        connectionJustOpenned = true;
        break;
    case StreamEvent::hasBytesAvailable:
        if (&stream == iStream.get())
            readAvailableBytes();
        break;
    case StreamEvent::hasSpaceAvailable:
        log_.line(QStringLiteral("NSStreamEventHasSpaceAvailable"));
        break;
    case StreamEvent::errorOccurred:
        handleError(stream);
        break;
    case StreamEvent::endEncountered:
        log_.line(QStringLiteral("NSStreamEventEndEncountered"));
        closeTelnetConnection();
        break;
    default:
        log_.line(QStringLiteral("NSStreamEvent Unknown:[%1]").arg(eventCode));
    }
}

void ClusterSession::handleError(const Stream& stream)
{
    const QString error = stream.errorDescription();
    const QString text = QStringLiteral("NSStreamEventErrorOccurred:[%1]").arg(shownText(error));
    if (!error.isNull())
        log_.line(text);
    closeTelnetConnection();
    host_.appendText(text);
}

void ClusterSession::readAvailableBytes()
{
    const std::ptrdiff_t n = iStream->read(std::span(readBuffer).first(readBuffer.size() - 1));
    if (n <= 0) {
        log_.line(QStringLiteral("NSStreamEventHasBytesAvailable:bytesReadFromStream:[%1]").arg(n));
        if (n == 0)
            closeTelnetConnection();
        return;
    }
    const auto count = static_cast<std::size_t>(n);
    readBuffer[count] = std::byte{0};
    if (count >= readBuffer.size() - 1) {
        ++_bufferOverRunCount;
        log_.line(QStringLiteral("DXClusterController:NSStreamEventHasBytesAvailable:bytesReadFromStream:%1, "
                                 "buffer overrun count:%2")
                      .arg(n)
                      .arg(_bufferOverRunCount));
    }
    if (_bufferOverRunCount >= floodReads) {
        log_.line(QStringLiteral("NSStreamEventHasBytesAvailable: Spot Flood, Disconnecting"));
        host_.setReconnect(false);
        closeTelnetConnection();
    }
    // Counts on past 2^31 as the 32-bit number it is.
    bytesReceivedOnThisConnection = static_cast<std::int32_t>(
        static_cast<std::uint32_t>(bytesReceivedOnThisConnection) + static_cast<std::uint32_t>(count));
    _lastRecievedMessageTime = clock_.now();
    treatLines(decodeClusterLine(reinterpret_cast<const char*>(readBuffer.data()), converter_, log_));
}

void ClusterSession::treatLines(const QString& text)
{
    if (++waitingReads_ == mostWaitingReads && iStream)
        iStream->holdEvents(true);
    host_.bufferQueue().async([this, lines = linesOfChunk(text), node = telnetHostName()] {
        lineAssembly_.processInputStream(lines, node);
        readTreated();
    });
}

void ClusterSession::readTreated()
{
    if (waitingReads_-- != mostWaitingReads)
        return;
    mainQueue_.async([this] {
        if (iStream)
            iStream->holdEvents(waitingReads_ >= mostWaitingReads);
    });
}

} // namespace spotwell
