// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ProgramFixture.h"
#include "tests/integration/support/WindowPing.h"

#include <QFile>

namespace spotwell
{
namespace
{

using namespace std::chrono_literals;

/// An old logger that hangs in the middle of a script while the node goes on. A longer run, an hour's lines
/// at a hundred a second, with the variable SPOTWELL_LONG_TESTS.
class HungLoggerTest : public ProgramFixture
{
protected:
    void SetUp() override
    {
        logger = makeLogger(QStringLiteral("6.44"));
        startConnected();
        ASSERT_TRUE(ping.answers());
        say(spotLine(0) + "\n");
        ASSERT_EQ(numberOfNextCall(), 0);
        // Its answer has left when it has answered this.
        (void)logger->count(QString());
        logger->stop();
        ping.forget();
        // This is the one whose script hangs.
        sendLines(1);
    }
    void TearDown() override
    {
        logger->resume();
        ProgramFixture::TearDown();
    }
    /// How many bytes of the node's have come to the program, which has not read them.
    qint64 unread() const
    {
        QFile connections(QStringLiteral("/proc/net/tcp"));
        EXPECT_TRUE(connections.open(QIODevice::ReadOnly));
        const QByteArray remote = QByteArray::number(node.port(), 16).toUpper().rightJustified(4, '0');
        for (const QByteArray& row : connections.readAll().split('\n')) {
            // Number, local and remote address, state (1: established), both queues; see proc(5).
            const QByteArrayList fields = row.simplified().split(' ');
            if (fields.size() > 4 && fields[2].endsWith(':' + remote) && fields[3] == "01")
                return fields[4].mid(fields[4].indexOf(':') + 1).toLongLong(nullptr, 16);
        }
        return 0;
    }
    /// Sends so many lines, in pieces that fit into one read, each when the one before was read.
    void sendLines(int count)
    {
        constexpr int pieceBytes = 15'000;
        const int perPiece = pieceBytes / (length + 1);
        for (const int end = sent + count; sent < end;) {
            QByteArray piece;
            for (int i = 0; i < perPiece && sent < end; ++i)
                piece += spotLine(++sent, length) + "\n";
            say(piece);
            ASSERT_TRUE(waitUntil([this] { return unread() == 0; }, 60s));
        }
    }
    /// More lines than may wait.
    void overflow()
    {
        sendLines(lines);
        EXPECT_TRUE(logs(warning));
        EXPECT_TRUE(ping.answers());
        const qint64 before = program->residentKiB();
        sendLines(more);
        EXPECT_TRUE(ping.answers());
        // Lines that were read need not wait yet. They do when what was said behind them is answered.
        say("login: ");
        ASSERT_TRUE(hears("N0CALL\n"));
        if (!sanitized) {
            EXPECT_LT(program->residentKiB() - before, 2048);
        }
    }
    /// The number in the line of the next script; negative when there is none.
    int numberOfNextCall()
    {
        const QString line = next(*logger, QStringLiteral("call")).value(4);
        return line.isEmpty() ? -1 : line.mid(line.indexOf(QLatin1Char('#')) + 1, 7).toInt();
    }

    const bool isLong = qEnvironmentVariableIsSet("SPOTWELL_LONG_TESTS");
    /// Of a line. Long ones fill what may wait (4 Mi characters) with fewer of them.
    const int length = isLong ? 75 : 2000;
    /// More than may wait, and further ones.
    const int lines = isLong ? 60'000 : 2200;
    const int more = isLong ? 300'000 : 400;
    const QString warning =
        QStringLiteral("takeSpotLine: too many lines are waiting for Logwright, dropping the oldest");
    WindowPing ping;
    std::unique_ptr<BusPeer> logger;
    int sent = 0;
};

TEST_F(HungLoggerTest, getsTheNewestLinesInOrderWhenItGoesOn)
{
    overflow();
    logger->resume();
    EXPECT_EQ(numberOfNextCall(), 1) << "the one it hung on";
    const int waiting = (4 * 1024 * 1024) / length;
    for (int number = sent - waiting + 1; number <= sent; ++number)
        ASSERT_EQ(numberOfNextCall(), number);
    EXPECT_TRUE(ping.answers());
    EXPECT_EQ(countOfEntries(warning), 1);
    sendLines(1);
    EXPECT_EQ(numberOfNextCall(), sent);
}

TEST_F(HungLoggerTest, doesNotHoldTheEndHoweverManyLinesWait)
{
    overflow();
    endAtOnce();
}

TEST_F(HungLoggerTest, doesNotHoldTheEndWhileItTakesWhatHasWaited)
{
    overflow();
    logger->resume();
    ASSERT_EQ(numberOfNextCall(), 1);
    ASSERT_GT(numberOfNextCall(), 1);
    endAtOnce();
    EXPECT_EQ(countOfEntries(warning), 1);
}

} // namespace
} // namespace spotwell
