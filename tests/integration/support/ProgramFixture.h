// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/integration/support/Home.h"
#include "tests/integration/support/RunningProgram.h"
#include "tests/support/LoopbackPeer.h"
#include "tests/support/Printers.h"
#include "tests/support/bus/BusPeer.h"
#include "tests/support/bus/PrivateBus.h"

#include <QRegularExpression>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>

namespace spotwell
{

/// The shipped program with a home, a bus and a node of its own. Whatever a test does to it, it has to end
/// in order, without a sanitizer's report.
class ProgramFixture : public testing::Test
{
protected:
    using Moment = std::chrono::steady_clock::time_point;

    ~ProgramFixture() override;
    void TearDown() override;

    /// Settings that lead to a node on loopback: N0CALL, "secret", with "reconnect" on.
    [[nodiscard]] static SettingsTexts settingsFor(std::uint16_t port);
    /// Starts the program, with the settings that the home has.
    void start(const QStringList& variables = {});
    /// Starts it with the settings for `node`; there is a connection when this returns.
    void startConnected(const QStringList& variables = {});
    /// Ends it, in order.
    void end(int signalNumber = SIGTERM);
    /// Likewise; that has to take less than a second.
    void endAtOnce(int signalNumber = SIGTERM);

    /// The texts of the log's entries, without what stands before them.
    [[nodiscard]] QStringList entries() const;
    /// Waits until the log has `count` entries of this text.
    [[nodiscard]] bool logs(const QString& text, qsizetype count = 1) const;
    [[nodiscard]] qsizetype countOfEntries(const QString& text) const { return entries().count(text); }

    /// The node says this.
    Moment say(const QByteArray& text);
    /// Waits until the node has heard exactly this since the start. When that was.
    std::optional<Moment> hears(const QByteArray& text);

    /// A logger of this version on the bus that also tells of the line notifications it gets.
    [[nodiscard]] std::unique_ptr<BusPeer> makeLogger(const QString& version);
    /// The next thing of this kind that the peer saw; empty when there is none.
    static QStringList next(BusPeer& peer, const QString& kind);

    Home home;
    PrivateBus bus;
    LoopbackPeer node;
    /// A command that becomes the program; none by default.
    QStringList launcher;
    std::optional<RunningProgram> program;
};

/// What begins an entry of the log.
[[nodiscard]] const QRegularExpression& entryFront();
/// A spot line with its number in it, without a line end.
[[nodiscard]] QByteArray spotLine(int number, qsizetype length = 75);
/// What a listener on the bus sees of the notification of such a line.
[[nodiscard]] QStringList notificationOf(const QByteArray& line,
                                         const QString& host = QStringLiteral("127.0.0.1"));

inline const QString loggerBusName = QStringLiteral("com.tarnbrooksoftware.Application.Logwright");
inline const QString lineNotificationName = QStringLiteral("com.tarnbrooksoftware.spotwell_line");

} // namespace spotwell
