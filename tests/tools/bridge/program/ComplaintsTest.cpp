// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/Complaints.h"

#include "tests/fakes/SharedLog.h"
#include "tests/support/WaitUntil.h"
#include "tools/spotwell-bridge/ErrorLog.h"

#include <gtest/gtest.h>

#include <array>
#include <unistd.h>

namespace spotwell::bridge
{

namespace
{

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

TEST(Complaints, AreAtMostOneASecondOfEachKind)
{
    SharedLog log;
    Complaints complaints(log);
    const auto begin = Alarm::Clock::now();
    for (int i = 0; i < 58; ++i)
        complaints.complain(u"a"_s);
    complaints.complain(u"b"_s);
    EXPECT_EQ(log.lines(), (QStringList{u"a"_s, u"b"_s}));
    EXPECT_TRUE(waitUntil([&log] { return log.lines().size() == 3; }));
    EXPECT_GE(Alarm::Clock::now() - begin, 1s);
    EXPECT_EQ(log.lines().last(), u"a (57 more)"_s);

    // The second after a count is as quiet.
    complaints.complain(u"a"_s);
    complaints.complain(u"b"_s);
    EXPECT_EQ(log.lines().mid(3), QStringList{u"b"_s});
    EXPECT_TRUE(waitUntil([&log] { return log.lines().size() == 5; }));
    EXPECT_GE(Alarm::Clock::now() - begin, 2s);
    EXPECT_EQ(log.lines().last(), u"a (1 more)"_s);
}

TEST(ErrorLog, IsOneLineEach)
{
    const struct {
        QString text;
        QString line;
    } table[] = {
        {u"plain é"_s, u"plain é"_s},
        {u"a\nb\r\tc\x1b[31m"_s, u"a\ufffdb\ufffd\ufffdc\ufffd[31m"_s},
        {u"a\u2028b\u2029c\u202ed\u200fe\u0085f"_s, u"a\ufffdb\ufffdc\ufffdd\ufffde\ufffdf"_s},
        {QString(1000, u'x'), QString(1000, u'x')},
        {QString(1001, u'x'), QString(1000, u'x')},
    };
    for (const auto& row : table)
        EXPECT_EQ(oneLine(row.text), row.line);

    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    ErrorLog(ends[1]).line(u"a\nb"_s);
    std::array<char, 100> bytes{};
    const ssize_t count = ::read(ends[0], bytes.data(), bytes.size());
    EXPECT_EQ(std::string(bytes.data(), static_cast<std::size_t>(count)), "spotwell-bridge: a\xEF\xBF\xBD"
                                                                          "b\n");
    ::close(ends[0]);
    ::close(ends[1]);
}

} // namespace

} // namespace spotwell::bridge
