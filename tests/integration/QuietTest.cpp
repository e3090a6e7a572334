// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ProgramFixture.h"

namespace spotwell
{
namespace
{

/// Everything that is said on a bus, as another program sees it.
class BusMonitor
{
public:
    explicit BusMonitor(const PrivateBus& bus)
        : process_({"dbus-monitor", "--profile", "--address", bus.address()})
    {
        // It loses its name when it becomes a monitor: from here on it sees all.
        while (const auto line = process_.readLine()) {
            if (line->find("NameLost") != std::string::npos)
                return;
        }
        ADD_FAILURE() << "dbus-monitor does not start";
    }
    /// Method calls and signals so far, as "INTERFACE MEMBER".
    const QStringList& said()
    {
        // Type, time, serial, sender, destination, path, interface, member.
        while (const auto line = process_.readLine(std::chrono::milliseconds{0})) {
            const QStringList fields = QString::fromStdString(*line).split(QLatin1Char('\t'));
            if (fields.size() == 8)
                said_.append(fields[6] + QLatin1Char(' ') + fields[7]);
        }
        return said_;
    }

private:
    ChildProcess process_;
    QStringList said_;
};

using QuietTest = ProgramFixture;

TEST_F(QuietTest, saysNothingThatIsNotAskedFor)
{
    BusMonitor monitor(bus);
    const auto logger = makeLogger(QStringLiteral("6.45"));
    startConnected();
    say("Welcome\r\nlogin: ");
    ASSERT_TRUE(hears("N0CALL\n"));
    say("Hello\r\n" + spotLine(1, 74) + "\r\n");
    // At start-up, and five seconds later for the bulb.
    const QString list = QStringLiteral("org.freedesktop.DBus ListNames");
    ASSERT_TRUE(waitUntil([&] { return monitor.said().count(list) >= 2; }));
    end();
    EXPECT_TRUE(hears("N0CALL\nquit\n"));

    EXPECT_LE(monitor.said().count(list), 3);
    EXPECT_EQ(monitor.said().count(QStringLiteral("org.freedesktop.DBus.Properties GetAll")), 1);
    QStringList others = monitor.said();
    others.removeIf([](const QString& message) {
        return message.startsWith(QStringLiteral("org.freedesktop.DBus ")) ||
               message == QStringLiteral("org.freedesktop.DBus.Properties GetAll");
    });
    // Of a desktop that wants high contrast, once when it starts and once when its window is active: two
    // settings.
    const QString portal = QStringLiteral("org.freedesktop.portal.Settings Read");
    EXPECT_LE(others.removeAll(portal), 4);
    EXPECT_EQ(others, QStringList());
}

TEST_F(QuietTest, doesNotGrowWithTheLinesThatPass)
{
    if (sanitized)
        GTEST_SKIP() << "a sanitizer's memory grows by itself";
    const auto logger = makeLogger(QStringLiteral("6.45"));
    startConnected();
    constexpr int batch = 200; // less than one whole read, which would count as a flood
    std::vector<qint64> resident;
    for (int first = 1; first <= 20'000; first += batch) {
        QByteArray lines;
        for (int number = first; number < first + batch; ++number)
            lines += spotLine(number) + "\r\n";
        say(lines);
        for (int number = first; number < first + batch; ++number)
            ASSERT_EQ(next(*logger, QStringLiteral("signal")), notificationOf(spotLine(number)));
        if (first + batch == 10'001 || first + batch == 20'001)
            resident.push_back(program->residentKiB());
    }
    ASSERT_EQ(resident.size(), 2U);
    EXPECT_GT(resident[0], 10'000);
    EXPECT_LT(resident[1] - resident[0], 1024);
    RecordProperty("residentKiB", static_cast<int>(resident[1]));
}

} // namespace
} // namespace spotwell
