// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ProgramFixture.h"

#include <csignal>
#include <iostream>

namespace spotwell
{

const QRegularExpression& entryFront()
{
    static const QRegularExpression front(
        QStringLiteral(R"(^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}[+-]\d{4} spotwell\[\d+:\d+\] )"));
    return front;
}

QByteArray spotLine(int number, qsizetype length)
{
    const QByteArray line = "DX de W3XYZ:     14025.0  JA1XYZ       #" +
                            QByteArray::number(number).rightJustified(7, '0') + " CQ up 2 UTC";
    return line.leftJustified(length, '.');
}

QStringList notificationOf(const QByteArray& line, const QString& host)
{
    return {QStringLiteral("signal"),
            QStringLiteral("/com/tarnbrooksoftware/DistributedNotifications"),
            QStringLiteral("com.tarnbrooksoftware.DistributedNotifications"),
            QStringLiteral("Posted"),
            QStringLiteral("ssa{sv}"),
            lineNotificationName,
            QStringLiteral("string object"),
            QStringLiteral("line=QString:") + QString::fromUtf8(line),
            QStringLiteral("source=QString:") + host};
}

ProgramFixture::~ProgramFixture() = default;

void ProgramFixture::TearDown()
{
    if (program && program->isRunning())
        end();
    const QByteArray written = home.log() + (program ? program->standardError() : QByteArray());
    for (const char* sign : {"Sanitizer", "runtime error:"})
        EXPECT_FALSE(written.contains(sign)) << sign;
    if (HasFailure())
        std::cerr << "What the program wrote:\n" << written.constData();
}

SettingsTexts ProgramFixture::settingsFor(std::uint16_t port)
{
    return {{QStringLiteral("dxcluster"), QStringLiteral("127.0.0.1")},
            {QStringLiteral("port"), QString::number(port)},
            {QStringLiteral("callsign"), QStringLiteral("N0CALL")},
            {QStringLiteral("password"), QStringLiteral("secret")},
            {QStringLiteral("reconnect"), QStringLiteral("true")}};
}

void ProgramFixture::start(const QStringList& variables)
{
    program.emplace(home, bus.address(), variables, launcher);
}

void ProgramFixture::startConnected(const QStringList& variables)
{
    home.writeSettings(settingsFor(node.port()));
    start(variables);
    ASSERT_TRUE(node.accept());
}

void ProgramFixture::end(int signalNumber)
{
    EXPECT_TRUE(program->end(signalNumber)) << "no orderly end";
}

void ProgramFixture::endAtOnce(int signalNumber)
{
    const auto taken = program->end(signalNumber);
    ASSERT_TRUE(taken) << "no orderly end";
    EXPECT_LT(taken->count(), 1.0 * slowness);
}

QStringList ProgramFixture::entries() const
{
    QStringList result;
    for (QString line : QString::fromUtf8(home.log()).split(QLatin1Char('\n')))
        result.append(line.remove(entryFront()));
    return result;
}

bool ProgramFixture::logs(const QString& text, qsizetype count) const
{
    return waitUntil([&] { return countOfEntries(text) >= count; });
}

ProgramFixture::Moment ProgramFixture::say(const QByteArray& text)
{
    const Moment now = std::chrono::steady_clock::now();
    EXPECT_EQ(node.send(text), text.size());
    return now;
}

std::optional<ProgramFixture::Moment> ProgramFixture::hears(const QByteArray& text)
{
    const bool heard = waitUntil([&] { return node.heard().size() >= text.size(); });
    const Moment now = std::chrono::steady_clock::now();
    EXPECT_EQ(node.heard(), text);
    return heard ? std::optional(now) : std::nullopt;
}

std::unique_ptr<BusPeer> ProgramFixture::makeLogger(const QString& version)
{
    auto logger = std::make_unique<BusPeer>(bus);
    logger->command({QStringLiteral("text"), QStringLiteral("DisplayName"), QStringLiteral("Logwright")});
    logger->command({QStringLiteral("text"), QStringLiteral("Version"), version});
    logger->command({QStringLiteral("listen"), lineNotificationName});
    logger->command({QStringLiteral("own"), loggerBusName});
    return logger;
}

QStringList ProgramFixture::next(BusPeer& peer, const QString& kind)
{
    while (true) {
        QStringList seen = peer.next();
        if (seen.isEmpty() || seen.first() == kind)
            return seen;
    }
}

} // namespace spotwell
