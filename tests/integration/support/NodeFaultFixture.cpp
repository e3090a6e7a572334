// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/NodeFaultFixture.h"

#include <QThread>

#include <csignal>

namespace spotwell
{

using namespace std::chrono_literals;

namespace
{

const QString openedLine = QStringLiteral("openTelnetConnection");
const QString closedLine = QStringLiteral("closeTelnetConnection");

/// Like waitUntil(), for what the program has to be asked for: not more often than it can answer beside its
/// work.
template <typename Condition>
bool askUntil(Condition condition)
{
    return waitUntil(
        [&] {
            QThread::msleep(20);
            return condition();
        },
        60s);
}

} // namespace

void NodeFaultFixture::open(const QString& name, const QStringList& libraries, const QStringList& variables)
{
    host = name;
    SettingsTexts settings = settingsFor(node.port());
    settings[QStringLiteral("dxcluster")] = host;
    home.writeSettings(settings);
    start(clock.variables(libraries) + variables);
    user.emplace(bus);
    ping.emplace();
    ASSERT_TRUE(logs(openedLine));
    read_ = newEntries().indexOf(openedLine);
    seeOpened();
}

void NodeFaultFixture::openConnected()
{
    open();
    ASSERT_TRUE(node.accept());
    seeToggle(true);
}

void NodeFaultFixture::seeOpened()
{
    see({openedLine});
    read({openedLine, QStringLiteral("Node:%1 Opened on Port:%2 istream status:[1] ostream status:[1]")
                          .arg(host, QString::number(node.port()))});
}

void NodeFaultFixture::logIn()
{
    say("login: ");
    ASSERT_TRUE(hears("N0CALL\n"));
    see({QStringLiteral("teln login: "), QStringLiteral("loging in")});
    read({QStringLiteral("logging in"),
          QStringLiteral("DXClusterController:sendTelnet:[7]characters:N0CALL")});
}

void NodeFaultFixture::passSpot()
{
    const QByteArray line = spotLine(++spots_);
    say(line + "\r\n");
    EXPECT_EQ(next(*logger, QStringLiteral("signal")), notificationOf(line, host));
    see({QStringLiteral("teln ") + QString::fromUtf8(line)});
}

void NodeFaultFixture::comeBack()
{
    clock.step(61s);
    comeBackByItself();
}

void NodeFaultFixture::comeBackByItself()
{
    seeReconnection();
    node.forget();
    ASSERT_TRUE(node.accept());
    seeToggle(true);
    passSpot();
}

void NodeFaultFixture::seeReconnection()
{
    const QString attempt = QStringLiteral("Attempting Reconnect with ") + host;
    see({attempt});
    read({attempt});
    seeOpened();
}

void NodeFaultFixture::endInOrder(bool reconnect)
{
    EXPECT_TRUE(ping->answers());
    EXPECT_EQ(newLines(), QStringList());
    SettingsTexts settings = settingsFor(node.port());
    settings[QStringLiteral("dxcluster")] = host;
    settings[QStringLiteral("reconnect")] = QVariant(reconnect).toString();
    for (const char* key : {"wsprnet", "dxsummit", "pota", "skimmers", "dxsexclusive", "dark"})
        settings.insert(QString::fromLatin1(key), QStringLiteral("false"));
    EXPECT_TRUE(program->end(SIGTERM)) << "no orderly end";
    EXPECT_EQ(home.settings(), settings);
    EXPECT_EQ(logger->count(QStringLiteral("signal")), 0);
    QStringList last = newEntries();
    last.removeOne(quitEntry);
    EXPECT_EQ(last, QStringList(closedLine));
}

void NodeFaultFixture::see(const QStringList& lines)
{
    (void)askUntil([&] { return newLines().size() >= lines.size(); });
    EXPECT_EQ(newLines().mid(0, lines.size()), lines);
    seen_ += lines.size();
}

void NodeFaultFixture::seeInAnyOrder(QStringList lines)
{
    (void)askUntil([&] { return newLines().size() >= lines.size(); });
    QStringList shown = newLines().mid(0, lines.size());
    shown.sort();
    lines.sort();
    EXPECT_EQ(shown, lines);
    seen_ += lines.size();
}

void NodeFaultFixture::read(const QStringList& entries)
{
    (void)waitUntil([&] { return newEntries().size() >= entries.size(); }, 60s);
    EXPECT_EQ(newEntries().mid(0, entries.size()), entries);
    read_ += entries.size();
}

void NodeFaultFixture::seeClosed(const QString& last)
{
    see(last.isEmpty() ? QStringList(closedLine) : QStringList{closedLine, last});
    seeToggle(false);
}

void NodeFaultFixture::seeLeftForSilence(const QString& minutes)
{
    const QString message = QStringLiteral("Nothing heard from 127.0.0.1 in %1 minutes").arg(minutes);
    see({message, closedLine});
    read({message, quitEntry, closedLine});
    comeBackByItself();
}

void NodeFaultFixture::seeToggle(bool on)
{
    EXPECT_TRUE(askUntil([&] { return user->isOn(toggleName) == on; })) << on;
}

bool NodeFaultFixture::staysQuiet()
{
    // The main thread tells its lines when it is through with the second look.
    return clock.ticks(2) && newLines().isEmpty() && newEntries().isEmpty();
}

QStringList NodeFaultFixture::newLines()
{
    return user->console().mid(seen_);
}

QStringList NodeFaultFixture::newEntries() const
{
    QStringList all = entries();
    all.removeLast(); // what stands behind the last line feed
    all.removeIf([](const QString& entry) {
        // The second one is about a busy machine.
        return entry == QStringLiteral("NSStreamEventHasSpaceAvailable") ||
               entry.startsWith(QStringLiteral("runningApplications:"));
    });
    return all.mid(read_);
}

} // namespace spotwell
