// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/bridge/telnet/SpotNodeFixture.h"

#include <vector>

namespace spotwell::bridge
{
namespace
{

using SpotNodeLoadTest = SpotNodeFixture;

// A minute's load of 200 lines a second and 100 clients, one of which never reads, as fast as the others take
// it.
TEST_F(SpotNodeLoadTest, givesEveryLineToNinetyNineClientsWhileOneNeverReads)
{
    constexpr int total = 12'000;
    constexpr int together = 100;
    // Less than what the node keeps, so that nobody who reads may miss a line.
    constexpr qsizetype mostAhead = 500'000;
    constexpr std::size_t readers = 99;

    listens();
    logsIn("N1STUCK", 4096);
    std::vector<TelnetClient*> clients;
    for (std::size_t i = 0; i < readers; ++i)
        clients.push_back(&logsIn("K" + QByteArray::number(static_cast<int>(i)) + "A"));

    QByteArray all;
    std::vector<qsizetype> heard(readers, 0);
    const auto readAll = [&] {
        qsizetype least = all.size();
        for (std::size_t i = 0; i < readers; ++i) {
            clients[i]->read();
            const QByteArray bytes = clients[i]->takeHeard();
            EXPECT_EQ(all.mid(heard[i], bytes.size()), bytes) << "client " << i;
            heard[i] += bytes.size();
            least = std::min(least, heard[i]);
        }
        return least;
    };
    for (int i = 0; i < total; ++i) {
        node_->send(spot(i));
        all += sent(i);
        if (i % together == 0) {
            ASSERT_TRUE(
                waitUntil([&] { return all.size() - readAll() < mostAhead; }, std::chrono::minutes{1}));
        }
    }
    ASSERT_TRUE(waitUntil([&] { return readAll() == all.size(); }, std::chrono::minutes{1}));
    EXPECT_EQ(log_.lines.size(), 100);
}

} // namespace
} // namespace spotwell::bridge
