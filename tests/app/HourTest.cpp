// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/app/FakeProgram.h"
#include "tests/support/Sanitizers.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

#include <algorithm>
#include <malloc.h>

namespace spotwell
{

namespace
{

/// The bytes that the process has allocated now. Sanitizers' allocators say nothing here.
std::size_t allocatedBytes()
{
    return ::mallinfo2().uordblks;
}

/// An hour of a contest: a node, three services and a logger, all by hand and all without rest.
struct HourTest : testing::Test {
    HourTest()
    {
        for (const char* box : {"reconnect", "wsprnet", "dxsummit", "pota", "skimmers"})
            program.defaults.booleans[QLatin1String(box)] = true;
        program.defaults.strings[QStringLiteral("dxcluster")] = QStringLiteral("dxc.example.org");
        program.defaults.strings[QStringLiteral("callsign")] = QStringLiteral("N0CALL");
        program.launch();
        program.sockets.last().receive("login: ");
    }

    void passSecond(int second)
    {
        if (second % 300 == 0)
            changeLogger();
        // Once in a quarter of an hour the node ends the connection; the supervisor makes it again.
        if (program.window.connected->isChecked())
            speak(second);
        program.mainQueue.advance(Seconds{1});
        program.runQueues();
        for (const char* role :
             {"wsprnet_background_queue", "dxsummit_background_queue", "pota_background_queue"})
            program.queue(role).runPending();
        if (second % 3 == 0)
            answerAll();
        program.mainQueue.runPending();
        QCoreApplication::processEvents();
        collect();
    }
    void changeLogger()
    {
        if (program.applications.applications.empty())
            program.applications.add(loggerName(), QStringLiteral("6.45"));
        else
            program.applications.applications.clear();
    }
    void speak(int second)
    {
        FakeConnection& node = program.sockets.last();
        if (second % 900 == 899) {
            node.inputEvent(StreamEvent::endEncountered);
            return;
        }
        node.inputEvent(StreamEvent::openCompleted);
        // Within the two minutes that a new connection has for its login.
        if (second % 100 == 0)
            node.receive("login: ");
        node.receive(
            QByteArray("DX de W1AW:      21205.0  X1X          CQ                             1428Z\r\n")
                .repeated(10));
    }
    /// Lets every transfer end that is under way, some of them badly.
    void answerAll()
    {
        while (!program.urlSession->requests.empty()) {
            const auto [url, handler] = program.urlSession->requests.front();
            program.urlSession->requests.pop_front();
            if (++answers_ % 10 == 0)
                handler({{}, std::nullopt, QStringLiteral("Host not found")});
            else
                handler({answerOf(url), UrlResponse{200}, std::nullopt});
        }
    }
    /// An answer with new spots and the last one's.
    QByteArray answerOf(const QString& url)
    {
        QByteArray& last = lastRows_[url];
        const bool isPage = url.contains(QLatin1String("wsprnet"));
        QByteArray rows;
        const int count = isPage ? 600 : 200;
        for (int i = 0; i < count; ++i) {
            const QByteArray id = QByteArray::number(++rows_);
            ++expectedSpots_;
            if (url.contains(QLatin1String("pota"))) {
                rows += R"({"spotId":)" + id +
                        R"(,"spotter":"W1AW","activator":"K1ABC","frequency":"14062",)" +
                        R"("spotTime":"2027-02-03T09:05:00","comments":"cq cq","reference":"US-0001"},)";
            } else if (isPage) {
                rows += "<tr><td>&nbsp;2027-02-03 09:04&nbsp;</td><td>&nbsp;K1ABC&nbsp;</td><td>&nbsp;14." +
                        id + "&nbsp;</td>" + QByteArray("<td>&nbsp;x&nbsp;</td>").repeated(4) +
                        "<td>&nbsp;W1AW&nbsp;</td></tr>\n";
            } else {
                rows += R"({"id":)" + id + R"(,"de_call":"W1AW","dx_call":"K1ABC","frequency":14062.5,)" +
                        R"("time":"2027-02-03T09:05:00","info":"cq","dx_longitude":7.5},)";
            }
        }
        const QByteArray all = last + rows;
        last = rows;
        return isPage ? "<table>\n" + all + "</table>\n" : '[' + all.chopped(1) + ']';
    }
    /// Takes what the fakes have kept.
    void collect()
    {
        for (const FakeNotificationCenter::Posted& posted : program.center.posted)
            ++(posted.name.endsWith(QLatin1String("_spot")) ? spots_ : lines_);
        program.center.posted = {};
        program.log.lines = {};
        program.urlSession->pauses = {};
        program.sockets.connections.erase(program.sockets.connections.begin(),
                                          program.sockets.connections.end() - 1);
        program.sockets.last().written = {};
        program.sockets.last().calls = {};
    }
    /// Passes the time until second `end`; the most that was allocated meanwhile.
    std::size_t mostAllocatedUntil(int end)
    {
        std::size_t most = 0;
        for (; second_ < end; ++second_) {
            passSecond(second_);
            most = std::max(most, allocatedBytes());
        }
        return most;
    }

    FakeProgram program;
    std::map<QString, QByteArray> lastRows_;
    int rows_ = 0;
    int answers_ = 0;
    int second_ = 1;
    int expectedSpots_ = 0;
    int spots_ = 0;
    int lines_ = 0;
};

} // namespace

TEST_F(HourTest, MemoryStaysFlatAndNothingIsLost)
{
    // What is remembered grows to its limit and is forgotten several times within each third. Under
    // sanitizers the first one has to do, and nothing is known of the memory.
    constexpr int third = 1200;
    constexpr int seconds = sanitized ? third : 3 * third;
    (void)mostAllocatedUntil(third);
    if constexpr (!sanitized) {
        const std::size_t before = mostAllocatedUntil(2 * third);
        const std::size_t after = mostAllocatedUntil(3 * third);
        RecordProperty("before", static_cast<int>(before));
        RecordProperty("after", static_cast<int>(after));
        EXPECT_LT(after, before + before / 20);
    }
    EXPECT_GT(expectedSpots_, 5 * seconds);
    EXPECT_GE(spots_, expectedSpots_);
    EXPECT_LT(spots_, expectedSpots_ + expectedSpots_ / 10) << "twice only what was forgotten in between";
    EXPECT_GT(lines_, 4 * seconds) << "the logger runs half of the time";
}

} // namespace spotwell
