// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/bridge/clients/FourFeeds.h"

#include "tests/integration/support/RunningProgram.h"
#include "tests/support/WaitUntil.h"

#include <QFile>

#include <stdexcept>

namespace spotwell::bridge
{

namespace
{

/// The width of a cluster line without a grid, in characters.
constexpr qsizetype usualWidth = 75;

/// A scenario of the node: a login, its lines, silence.
QString nodeScenario(const Home& home)
{
    const QString path = home.filePath(QStringLiteral("node.scenario"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw std::runtime_error("no temporary file");
    file.write("send \"login: \"\nexpect line within 60\nsend \"Good evening.\\r\\n\"\n");
    for (QString line : FourFeeds::clusterLines())
        file.write("send \"" + line.replace(u'"', QStringLiteral("\\\"")).toUtf8() + "\\r\\n\"\n");
    file.write("stay silent\n");
    return path;
}

QStringList service(const QString& name)
{
    return {name, QStringLiteral("--set"), QStringLiteral("rows=%1").arg(FourFeeds::spotsOfEach),
            QStringLiteral("--set"), QStringLiteral("new=1")};
}

std::vector<FeedSpot> clusterSpots(RunningBridge& bridge)
{
    std::vector<FeedSpot> result;
    const QStringList lines = bridge.lines();
    for (const QString& line : FourFeeds::clusterLines()) {
        if (lines.contains(line))
            result.push_back({QStringLiteral("node"), line.mid(26, 12).trimmed(), line.mid(16, 8).trimmed(),
                              QRegularExpression(QRegularExpression::escape(line.left(usualWidth)))});
    }
    return result;
}

std::vector<FeedSpot> webSpots(RunningBridge& bridge, const QString& feed)
{
    std::vector<FeedSpot> result;
    for (const QJsonObject& spot : bridge.spots()) {
        if (spot[u"source"].toString() != feed || result.size() == FourFeeds::spotsOfEach)
            continue;
        const QString call = spot[u"combinedCallsign"].toString();
        const QString frequency = QString::number(spot[u"megahertz"].toDouble() * 1000.0, 'f', 1);
        const QString spotter = spot[u"dxde_call"].toString();
        result.push_back({feed, call, frequency,
                          QRegularExpression(QStringLiteral("DX de %1: *%2  %3 ")
                                                 .arg(QRegularExpression::escape(spotter),
                                                      QRegularExpression::escape(frequency),
                                                      QRegularExpression::escape(call)))});
    }
    return result;
}

} // namespace

QStringList missing(const std::vector<FeedSpot>& spots, const std::function<bool(const FeedSpot&)>& shows)
{
    QStringList result;
    (void)waitUntil([&] {
        result.clear();
        for (const FeedSpot& spot : spots) {
            if (!shows(spot))
                result.append(spot.feed + QStringLiteral(": ") + spot.line.pattern());
        }
        return result.isEmpty();
    });
    return result;
}

QStringList FourFeeds::clusterLines()
{
    return {
        QStringLiteral("DX de W3XYZ:     14025.0  JA1XYZ       CQ up 2                        1428Z"),
        QStringLiteral("DX de OH2XYZ-#:   7012.3  ZL1XYZ       CW 12 dB 24 WPM CQ             1428Z KP20"),
        QStringLiteral("DX de 9A/DL1XYZ:  1823.5  VP8/G0XYZ    QRP 5 W, listening \"down\"      1429Z"),
    };
}

FourFeeds::FourFeeds(const Home& home, const PrivateBus& bus)
    : node_({nodeScenario(home)}),
      pota_(service(QStringLiteral("pota"))),
      dxsummit_(service(QStringLiteral("dxsummit"))),
      wsprnet_(service(QStringLiteral("wsprnet")))
{
    // A proxy of the machine has no business with its own services.
    demo_.setProcessEnvironment(
        programEnvironment(home, bus.address(), {QStringLiteral("no_proxy=127.0.0.1")}));
    demo_.setStandardInputFile(QProcess::nullDevice());
    demo_.setProcessChannelMode(QProcess::ForwardedChannels);
    demo_.start(QStringLiteral(SPOTWELL_DEMO),
                {QStringLiteral("--seconds"), QStringLiteral("0"), QStringLiteral("--node-port"),
                 QString::number(node_.port()), QStringLiteral("--pota-port"), QString::number(pota_.port()),
                 QStringLiteral("--dxsummit-port"), QString::number(dxsummit_.port()),
                 QStringLiteral("--wsprnet-port"), QString::number(wsprnet_.port())});
    if (!demo_.waitForStarted())
        throw std::runtime_error("cannot start " SPOTWELL_DEMO);
}

FourFeeds::~FourFeeds()
{
    demo_.kill();
    demo_.waitForFinished();
}

std::vector<FeedSpot> FourFeeds::arriveAt(RunningBridge& bridge)
{
    std::vector<FeedSpot> spots;
    (void)waitUntil(
        [&] {
            spots = clusterSpots(bridge);
            for (const QString& feed :
                 {QStringLiteral("POTA"), QStringLiteral("DXSummit"), QStringLiteral("WSPRnet")}) {
                const std::vector<FeedSpot> further = webSpots(bridge, feed);
                spots.insert(spots.end(), further.begin(), further.end());
            }
            return spots.size() == std::size_t{4} * spotsOfEach;
        },
        std::chrono::seconds{60});
    return spots;
}

std::optional<int> FourFeeds::end()
{
    demo_.terminate();
    if (!waitUntil([this] { return demo_.state() == QProcess::NotRunning; }) ||
        demo_.exitStatus() != QProcess::NormalExit)
        return std::nullopt;
    return demo_.exitCode();
}

} // namespace spotwell::bridge
