// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/bridge/program/BridgeFixture.h"
#include "tests/tools/bridge/program/TelnetClient.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <list>
#include <string>

namespace spotwell::bridge
{

namespace
{

/// Sanitizers' own bookkeeping is memory of the program too.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool memoryIsItsOwn = false;
#else
constexpr bool memoryIsItsOwn = true;
#endif

/// A hundred clients, one of which does not read, and far more for them than the bridge keeps.
class LoadTest : public BridgeFixture
{
protected:
    static constexpr int readers = 99;
    static constexpr int spots = 3000;
    /// What is on its way at a time: far less than what the bridge keeps, so that nobody who reads misses
    /// any.
    static constexpr int together = 40;

    static bool isWebSpot(int number) { return number % 4 == 0; }
    /// The line of a spot, with its end. Those from the cluster are nearly as long as any that is passed on.
    static std::string lineOf(int number)
    {
        const QString call = QString::number(number);
        if (!isWebSpot(number)) {
            constexpr qsizetype length = 3900;
            return clusterSpot(call).leftJustified(length, u'.').toStdString() + "\r\n";
        }
        std::string line = "DX de N0CALL:    14074.0  " + call.toStdString();
        line.resize(70, ' ');
        return line + "0905Z\r\n";
    }
    void postNumber(int number)
    {
        const QString line = QString::fromStdString(lineOf(number)).chopped(2);
        isWebSpot(number) ? postSpot(QString::number(number)) : post(line);
    }
    /// A figure of the bridge's memory, in KiB.
    qint64 memory(const std::string& key) const
    {
        std::ifstream status("/proc/" + std::to_string(bridge->process()) + "/status");
        std::string word;
        qint64 kibibytes = 0;
        while (status >> word && word != key + ':') {
        }
        status >> kibibytes;
        return kibibytes;
    }
    /// Goes through what a client heard: every spot is there, in order, or among those it was told are
    /// missing where they are. How many are.
    static int missing(const std::string& heard)
    {
        const std::string notice = "SPOTWELL: ";
        int next = 0;
        int told = 0;
        for (std::size_t at = 0; at < heard.size();) {
            const std::string line = heard.substr(at, heard.find('\n', at) + 1 - at);
            at += line.size();
            if (line == lineOf(next)) {
                ++next;
                continue;
            }
            const int count = std::atoi(line.c_str() + std::min(line.size(), notice.size()));
            if (line != notice + std::to_string(count) +
                            " spots were left out, for they were not taken in time.\r\n") {
                ADD_FAILURE() << "instead of spot " << next << ": " << line;
                return told;
            }
            told += count;
            next += count;
        }
        EXPECT_EQ(next, spots);
        return told;
    }
};

TEST_F(LoadTest, NinetyNineClientsGetEveryLineWhileOneDoesNotRead)
{
    startNode();
    TelnetClient late(port, 4096);
    ASSERT_TRUE(late.logIn());
    late.takeHeard();
    std::list<TelnetClient> clients;
    for (int i = 0; i < readers; ++i) {
        ASSERT_TRUE(clients.emplace_back(port).logIn());
        clients.back().takeHeard();
    }
    const qint64 before = memory("VmRSS");

    for (int number = 0; number < spots;) {
        std::string lines;
        for (int i = 0; i < together; ++i, ++number) {
            postNumber(number);
            lines += lineOf(number);
        }
        for (TelnetClient& client : clients)
            ASSERT_TRUE(client.hearsExactly(lines)) << "before spot " << number;
    }

    // Two MiB of lines are kept, once for all clients; what is on its way is granted another three. To keep
    // all that the one client did not take would need nine.
    constexpr qint64 mostMore = 5 * 1024;
    if (memoryIsItsOwn) {
        EXPECT_LT(memory("VmHWM") - before, mostMore) << "KiB";
    }

    // Whoever took nothing for a minute, which a slow machine may need for all this, is gone.
    if (late.hears(lineOf(spots - 1))) {
        const int left = missing(late.takeHeard());
        EXPECT_GT(left, spots / 2);
        EXPECT_LT(left, spots);
    } else {
        std::string word = nextLine();
        while (!word.empty() && word.find(" dropped ") == std::string::npos)
            word = nextLine();
        EXPECT_EQ(word, "spotwell-bridge: telnet: dropped N0CALL from 127.0.0.1: it took nothing for 60 s");
    }
}

} // namespace

} // namespace spotwell::bridge
