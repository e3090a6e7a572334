// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "delivery/LineDelivery.h"

#include "tests/fakes/FakeServices.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

namespace spotwell
{

namespace
{

const QString spotLine =
    QStringLiteral("DX de N0CALL:    21205.0  X1X          CQ                             1428Z");

struct LineDeliveryTest : testing::Test {
    void send(const QString& line)
    {
        delivery.sendSpotLineToLogwright(line, QStringLiteral("dxc.example.org"));
    }
    void runLogwright(const std::optional<QString>& version) { applications.add(loggerName(), version); }
    /// Keeps in one journal, from now on, what is asked, said and shown.
    void keepJournal()
    {
        const Note note = [this](const QString& entry) { journal.append(entry); };
        applications.note = note;
        center.note = note;
        scripts.note = note;
        log.note = note;
        display = note;
    }

    FakeRunningApplications applications;
    FakeNotificationCenter center;
    FakeScriptRunner scripts;
    FakeLog log;
    LoggerPresence presence{applications, log};
    QStringList console;
    std::vector<bool> bulb;
    QStringList journal;
    Note display = ignore;
    LineDelivery delivery{presence,
                          center,
                          scripts,
                          log,
                          {[this](bool running) {
                               display(running ? QStringLiteral("green") : QStringLiteral("grey"));
                               bulb.push_back(running);
                           },
                           [this](const QString& text) {
                               display(QStringLiteral("show ") + text);
                               console.append(text);
                           }}};
};

} // namespace

TEST_F(LineDeliveryTest, AnEmptyLineDoesNothing)
{
    runLogwright(QStringLiteral("7"));
    send(QString());
    EXPECT_EQ(applications.reads, 0);
    EXPECT_TRUE(bulb.empty());
    EXPECT_TRUE(log.lines.isEmpty());
    EXPECT_TRUE(center.posted.empty());
    EXPECT_TRUE(scripts.scripts.isEmpty());
}

TEST_F(LineDeliveryTest, WithoutLogwrightTheLineIsLost)
{
    send(spotLine);
    EXPECT_EQ(log.lines, QStringList{QStringLiteral("Logwright is not running")});
    EXPECT_EQ(bulb, std::vector{false});
    EXPECT_TRUE(center.posted.empty());
    EXPECT_TRUE(scripts.scripts.isEmpty());
    runLogwright(QStringLiteral("7"));
    send(QStringLiteral("another"));
    EXPECT_EQ(center.posted.size(), 1U) << "lost lines do not come back";
}

TEST_F(LineDeliveryTest, From645OnTheLineGoesByNotification)
{
    for (const char* version : {"6.45", "6.5", "6.46", "7", "10.1"}) {
        applications.applications.clear();
        center.posted.clear();
        runLogwright(QString::fromLatin1(version));
        const QString line = QStringLiteral("DX de \\N0CALL': \"x\" ");
        send(line);
        ASSERT_EQ(center.posted.size(), 1U) << version;
        EXPECT_EQ(center.posted[0].name, QStringLiteral("com.tarnbrooksoftware.spotwell_line"));
        EXPECT_EQ(center.posted[0].object, QStringLiteral("string object"));
        EXPECT_EQ(center.posted[0].userInfo,
                  (UserInfo{{QStringLiteral("line"), line},
                            {QStringLiteral("source"), QStringLiteral("dxc.example.org")}}));
    }
    EXPECT_TRUE(scripts.scripts.isEmpty());
    EXPECT_EQ(bulb, std::vector(5, true));
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST_F(LineDeliveryTest, BelowItGoesByScript)
{
    const std::optional<QString> versions[] = {QStringLiteral("6.44"),    QStringLiteral("6.449999"),
                                               QStringLiteral("6.10"),    QStringLiteral("6.4"),
                                               QStringLiteral("unknown"), std::nullopt};
    for (const auto& version : versions) {
        applications.applications.clear();
        scripts.scripts.clear();
        runLogwright(version);
        send(spotLine);
        EXPECT_EQ(scripts.scripts,
                  QStringList{QStringLiteral("Tell application \"Logwright\"\nprocessSpot \"") + spotLine +
                              QStringLiteral("\"\nend tell\n")});
    }
    EXPECT_TRUE(center.posted.empty());
    EXPECT_EQ(bulb, std::vector(6, true));
    EXPECT_TRUE(console.isEmpty());
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST_F(LineDeliveryTest, AScriptErrorIsLoggedAndShown)
{
    runLogwright(QStringLiteral("6.44"));
    scripts.error = QStringLiteral("100% %@ refused");
    send(spotLine);
    EXPECT_EQ(log.lines, QStringList{QStringLiteral("AppleScript Error:100% %@ refused")});
    EXPECT_EQ(console, QStringList{QStringLiteral("AppleScript Error:100% %@ refused")});
    scripts.error.reset();
    send(spotLine);
    EXPECT_EQ(scripts.scripts.size(), 2) << "the next line is tried in the same way";
}

TEST_F(LineDeliveryTest, TheLossIsLoggedBeforeTheBulbIsGrey)
{
    keepJournal();
    send(spotLine);
    EXPECT_EQ(journal, (QStringList{QStringLiteral("look for applications"),
                                    QStringLiteral("log Logwright is not running"), QStringLiteral("grey")}));
}

TEST_F(LineDeliveryTest, TheBulbIsGreenBeforeTheLineGoes)
{
    runLogwright(QStringLiteral("6.45"));
    keepJournal();
    send(spotLine);
    EXPECT_EQ(journal, (QStringList{QStringLiteral("look for applications"), QStringLiteral("green"),
                                    QStringLiteral("post com.tarnbrooksoftware.spotwell_line")}));
}

TEST_F(LineDeliveryTest, TheBulbIsGreenBeforeTheScriptAndItsErrorLoggedBeforeItIsShown)
{
    runLogwright(QStringLiteral("6.44"));
    scripts.error = QStringLiteral("refused");
    keepJournal();
    send(spotLine);
    EXPECT_EQ(journal,
              (QStringList{QStringLiteral("look for applications"), QStringLiteral("green"),
                           QStringLiteral("run a script"), QStringLiteral("log AppleScript Error:refused"),
                           QStringLiteral("show AppleScript Error:refused")}));
}

TEST(ProcessSpotScript, TurnsQuotesAndBackslashesIntoFullStopsOneForOne)
{
    EXPECT_EQ(processSpotScript(QStringLiteral("a\\b'c\"d\\\\''\"\"")),
              QStringLiteral("Tell application \"Logwright\"\nprocessSpot \"a.b.c.d......\"\nend tell\n"));
    EXPECT_EQ(processSpotScript(QStringLiteral("100% {}$`\t")),
              QStringLiteral("Tell application \"Logwright\"\nprocessSpot \"100% {}$`\t\"\nend tell\n"));
}

} // namespace spotwell
