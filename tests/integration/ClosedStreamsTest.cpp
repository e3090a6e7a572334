// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ProgramFixture.h"
#include "tests/integration/support/WindowPing.h"

namespace spotwell
{
namespace
{

using namespace Qt::StringLiterals;

/// The streams that are closed when the program starts, as a shell writes it.
class ClosedStreamsTest : public ProgramFixture, public testing::WithParamInterface<const char*>
{
protected:
    WindowPing ping;
};

TEST_P(ClosedStreamsTest, costNothing)
{
    home.writeSettings(settingsFor(node.port()));
    const QString command = u"exec \"$0\" "_s + QString::fromLatin1(GetParam());
    program.emplace(home, bus.address(), QStringList{}, QStringList{u"sh"_s, u"-c"_s, command});
    ASSERT_TRUE(node.accept());
    EXPECT_TRUE(ping.answers());
    say("login: ");
    EXPECT_TRUE(hears("N0CALL\n"));
    const std::unique_ptr<BusPeer> logger = makeLogger(u"6.50"_s);
    say(spotLine(1) + "\r\n");
    EXPECT_EQ(next(*logger, u"signal"_s), notificationOf(spotLine(1)));
    EXPECT_TRUE(ping.answers());
    end();
    EXPECT_EQ(entries().filter(u"Qt:"_s), QStringList{});
}

INSTANTIATE_TEST_SUITE_P(Closed, ClosedStreamsTest,
                         testing::Values("2>&-", "0<&- 2>&-", "1>&- 2>&-", "0<&- 1>&- 2>&-"),
                         [](const auto& closed) { return "set" + std::to_string(closed.index); });

} // namespace
} // namespace spotwell
