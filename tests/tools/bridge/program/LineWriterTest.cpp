// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/LineWriter.h"

#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace spotwell::bridge
{

namespace
{

using namespace std::chrono_literals;

/// A pipe, or a pair of sockets, that the test reads when it likes; blocking, as a shell hands it over.
class LineWriterTest : public testing::TestWithParam<bool>
{
protected:
    LineWriterTest()
    {
        (void)std::signal(SIGPIPE, SIG_IGN);
        EXPECT_EQ(GetParam() ? ::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) : ::pipe(ends.data()), 0);
        ::fcntl(ends[0], F_SETFL, O_NONBLOCK);
    }
    ~LineWriterTest() override
    {
        closeReader();
        ::close(ends[1]);
    }
    void closeReader()
    {
        if (ends[0] >= 0)
            ::close(std::exchange(ends[0], -1));
    }
    /// Everything that can be read now.
    const QByteArray& heard()
    {
        std::array<char, 65536> bytes{};
        ssize_t count = 0;
        while ((count = ::read(ends[0], bytes.data(), bytes.size())) > 0)
            heard_.append(bytes.data(), count);
        return heard_;
    }
    LineWriter::Handlers handlers()
    {
        return {[this] { ++losing; }, [this](std::size_t count) { lost.push_back(count); },
                [this](int error) { errors.push_back(error); }};
    }

    std::array<int, 2> ends{-1, -1};
    int losing = 0;
    std::vector<std::size_t> lost;
    std::vector<int> errors;

private:
    QByteArray heard_;
};

/// A line that says which it is, 1000 bytes with its line feed.
QByteArray numbered(int number)
{
    return QByteArray::number(number).rightJustified(999, '.');
}

TEST_P(LineWriterTest, WritesAtOnce)
{
    LineWriter writer(ends[1], handlers());
    writer.write("one");
    EXPECT_EQ(heard(), "one\n");
    writer.write("");
    writer.write(QByteArray(10'000, 'x'));
    EXPECT_EQ(heard(), "one\n\n" + QByteArray(10'000, 'x') + '\n');
    EXPECT_EQ(::fcntl(ends[1], F_GETFL) & O_NONBLOCK, 0) << "what others share is left alone";
}

TEST_P(LineWriterTest, KeepsEveryLineWithinItsLimits)
{
    LineWriter writer(ends[1], handlers());
    QByteArray expected;
    for (int number = 0; number < 2000; ++number) {
        writer.write(numbered(number));
        expected += numbered(number) + '\n';
    }
    EXPECT_TRUE(waitUntil([&] { return heard().size() >= expected.size(); }));
    EXPECT_EQ(heard(), expected);
    EXPECT_EQ(losing, 0);
    EXPECT_TRUE(lost.empty());
}

TEST_P(LineWriterTest, LosesTheOldestWholeLinesBeyondItsLimits)
{
    LineWriter writer(ends[1], handlers(), {100, std::size_t{1} << 30});
    // Longer than what is written at a time, so that one of them is half written when others are lost.
    const auto longLine = [](int number) {
        return QByteArray::number(number) + numbered(number).rightJustified(9'995, '-');
    };
    for (int number = 0; number < 2000; ++number)
        writer.write(longLine(number));
    EXPECT_EQ(losing, 1);
    EXPECT_TRUE(lost.empty()) << "told when it is over";
    const qsizetype inTheKernel = heard().count('\n');
    EXPECT_TRUE(waitUntil([&] {
        heard();
        return !lost.empty();
    }));
    const QByteArrayList lines = heard().split('\n');
    ASSERT_EQ(lost.size(), 1U);
    EXPECT_EQ(lines.size() - 1 + static_cast<qsizetype>(lost[0]), 2000);
    EXPECT_EQ(lines.size() - 1 - inTheKernel, 100);
    int last = -1;
    for (const QByteArray& line : lines.first(lines.size() - 1)) {
        const int number = line.mid(line.lastIndexOf('.') + 1).toInt();
        ASSERT_EQ(line, longLine(number)) << "whole lines only";
        ASSERT_GT(number, last);
        last = number;
    }
    EXPECT_EQ(last, 1999);
    writer.write("more");
    EXPECT_TRUE(heard().endsWith("\nmore\n"));
}

TEST_P(LineWriterTest, NeverWaitsWithALongLine)
{
    LineWriter writer(ends[1], handlers());
    const QByteArray line(1'000'000, 'x');
    writer.write(line);
    EXPECT_TRUE(waitUntil([&] { return heard().size() > line.size(); }));
    EXPECT_EQ(heard(), line + '\n');
}

TEST_P(LineWriterTest, BoundsItsBytes)
{
    LineWriter writer(ends[1], handlers(), {100'000, 5'000});
    for (int number = 0; number < 1000; ++number)
        writer.write(numbered(number));
    EXPECT_EQ(losing, 1);
    const qsizetype inTheKernel = heard().size();
    EXPECT_TRUE(waitUntil([&] {
        heard();
        return !lost.empty();
    }));
    // What was half written when the reader stopped is ended, which is why it may be a line more.
    EXPECT_LE(heard().size() - inTheKernel, 6'000);
    EXPECT_GE(heard().size() - inTheKernel, 4'000);
}

TEST_P(LineWriterTest, SaysOnceThatNobodyCanRead)
{
    LineWriter writer(ends[1], handlers());
    closeReader();
    writer.write("one");
    writer.write("two");
    EXPECT_EQ(errors, std::vector{EPIPE});
    EXPECT_EQ(losing, 0);
}

TEST_P(LineWriterTest, NoticesTheEndOfAReaderThatWasSlow)
{
    LineWriter writer(ends[1], handlers());
    for (int number = 0; number < 1000; ++number)
        writer.write(numbered(number));
    EXPECT_TRUE(errors.empty());
    closeReader();
    EXPECT_TRUE(waitUntil([this] { return !errors.empty(); }));
    EXPECT_EQ(errors.size(), 1U);
}

TEST_P(LineWriterTest, FinishesWithinItsTime)
{
    LineWriter writer(ends[1], handlers());
    for (int number = 0; number < 1000; ++number)
        writer.write(numbered(number));
    const qsizetype before = heard().size();
    writer.finish(50ms, 10s); // what there is room for leaves, then nothing more for 50 ms
    EXPECT_GT(heard().size(), before);
    const auto written = static_cast<std::size_t>(heard().count('\n'));
    ASSERT_EQ(lost.size(), 1U);
    EXPECT_EQ(written + lost[0], 1000U);
}

TEST_P(LineWriterTest, FinishesWithinItsTimeThoughSomethingIsReadAllTheTime)
{
    LineWriter writer(ends[1], handlers());
    for (int number = 0; number < 8000; ++number)
        writer.write(numbered(number));
    std::atomic<bool> over = false;
    // Everything would take more than ten seconds, on a busy machine the longer.
    std::thread reader([&] {
        std::array<char, 4096> bytes{};
        while (!over) {
            (void)!::read(ends[0], bytes.data(), bytes.size());
            std::this_thread::sleep_for(5ms);
        }
    });
    writer.finish(20s, 100ms);
    over = true;
    reader.join();
    EXPECT_EQ(lost.size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(PipesAndSockets, LineWriterTest, testing::Bool());

/// Reads a terminal after all when `limit` has passed, so that a test in which the writer waits for it fails
/// instead of waiting for ever.
class Rescue
{
public:
    Rescue(int terminal, std::chrono::seconds limit)
        : thread_([this, terminal, limit] {
              std::unique_lock lock(mutex_);
              if (over_.wait_for(lock, limit, [this] { return isOver_; }))
                  return;
              hasRescued = true;
              std::array<char, 65536> bytes{};
              while (!isOver_) {
                  lock.unlock();
                  pollfd entry{terminal, POLLIN, 0};
                  if (::poll(&entry, 1, 10) > 0)
                      (void)!::read(terminal, bytes.data(), bytes.size());
                  lock.lock();
              }
          })
    {
    }
    ~Rescue()
    {
        {
            const std::lock_guard lock(mutex_);
            isOver_ = true;
        }
        over_.notify_one();
        thread_.join();
    }
    Rescue(const Rescue&) = delete;
    Rescue& operator=(const Rescue&) = delete;

    std::atomic<bool> hasRescued = false;

private:
    std::mutex mutex_;
    std::condition_variable over_;
    bool isOver_ = false;
    std::thread thread_;
};

/// A terminal that can be opened anew, or cannot: by rights because it is another user's, here for want of
/// descriptors.
class LineWriterTerminalTest : public testing::TestWithParam<bool>
{
protected:
    LineWriterTerminalTest()
    {
        EXPECT_EQ(::grantpt(terminal) | ::unlockpt(terminal), 0);
        program = ::open(::ptsname(terminal), O_RDWR | O_NOCTTY);
        EXPECT_GE(program, 0);
    }
    ~LineWriterTerminalTest() override
    {
        ::close(terminal);
        ::close(program);
    }

    /// The first line, with which a writer opens what it writes to.
    static void writeFirst(LineWriter& writer)
    {
        rlimit before{};
        ::getrlimit(RLIMIT_NOFILE, &before);
        const rlimit none{1, before.rlim_max};
        if (!GetParam())
            ::setrlimit(RLIMIT_NOFILE, &none);
        writer.write("first");
        ::setrlimit(RLIMIT_NOFILE, &before);
    }

    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
    int program = -1;
};

TEST_P(LineWriterTerminalTest, IsNeverWaitedForWhenItIsHeldUp)
{
    int losing = 0;
    {
        const Rescue rescue(terminal, 10s);
        LineWriter writer(program, {[&losing] { ++losing; }, [](std::size_t) {}, [](int) {}},
                          {100, 1'000'000});
        writeFirst(writer);
        for (int number = 0; number < 1000; ++number)
            writer.write(numbered(number));
        EXPECT_FALSE(rescue.hasRescued);
    }
    EXPECT_EQ(losing, 1);
}

TEST_P(LineWriterTerminalTest, GetsEveryLine)
{
    const Rescue rescue(terminal, 10s);
    LineWriter writer(program, {[] {}, [](std::size_t) {}, [](int) {}});
    writeFirst(writer);
    QByteArray expected = "first\r\n";
    for (int number = 0; number < 20; ++number) {
        writer.write(numbered(number));
        expected += numbered(number) + "\r\n";
    }
    QByteArray heard;
    ::fcntl(terminal, F_SETFL, O_NONBLOCK);
    EXPECT_TRUE(waitUntil([&] {
        std::array<char, 65536> bytes{};
        const ssize_t count = ::read(terminal, bytes.data(), bytes.size());
        heard.append(bytes.data(), std::max<ssize_t>(count, 0));
        return heard.size() >= expected.size();
    }));
    EXPECT_EQ(heard, expected);
}

INSTANTIATE_TEST_SUITE_P(OwnAndForeign, LineWriterTerminalTest, testing::Bool());

TEST(LineWriter, HoldsSoMuchByItself)
{
    const LineWriter::Limits limits;
    EXPECT_EQ(limits.lines, 16'384U);
    EXPECT_EQ(limits.bytes, 8U * 1024 * 1024);
}

TEST(LineWriter, TellsWhyNothingCanBeWritten)
{
    std::vector<int> errors;
    const auto noted = [&errors](int error) { errors.push_back(error); };
    const int full = ::open("/dev/full", O_WRONLY);
    LineWriter(full, {[] {}, [](std::size_t) {}, noted}).write("x");
    ::close(full);
    const int readOnly = ::open("/dev/null", O_RDONLY);
    LineWriter(readOnly, {[] {}, [](std::size_t) {}, noted}).write("x");
    ::close(readOnly);
    EXPECT_EQ(errors, (std::vector{ENOSPC, EBADF}));
}

} // namespace

} // namespace spotwell::bridge
