// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/DesktopFileViewer.h"

#include "tests/fakes/SharedLog.h"
#include "tests/platform/ThreadShortage.h"
#include "tests/support/bus/BusPeer.h"

#include <gtest/gtest.h>

#include <mutex>
#include <optional>

namespace spotwell
{

namespace
{

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

class DesktopFileViewerTest : public testing::Test
{
protected:
    void makeViewer(std::chrono::milliseconds limit)
    {
        viewer.emplace(
            sessionBus, log,
            [this](const QString& folder) {
                const std::lock_guard lock(mutex);
                opened.append(folder);
            },
            limit);
    }
    void makeManager()
    {
        manager.emplace(bus);
        manager->command({u"own"_s, u"org.freedesktop.FileManager1"_s});
    }
    bool opens(const QStringList& folders)
    {
        return waitUntil([&] {
            const std::lock_guard lock(mutex);
            return opened == folders;
        });
    }

    PrivateBus bus;
    SharedLog log;
    SessionBus sessionBus{log, bus.address()};
    std::optional<BusPeer> manager;
    std::mutex mutex;
    QStringList opened;
    std::optional<DesktopFileViewer> viewer;
};

TEST_F(DesktopFileViewerTest, AsksTheFileManager)
{
    makeManager();
    makeViewer(20s);
    viewer->selectFile(u"/tmp/Log 1 100% #é?.txt"_s, u"/tmp"_s);
    EXPECT_EQ(manager->next(),
              (QStringList{u"call"_s, u"org.freedesktop.FileManager1"_s, u"ShowItems"_s, u"ass"_s,
                           u"file:///tmp/Log%201%20100%25%20%23%C3%A9%3F.txt"_s, QString()}));
    viewer.reset();
    EXPECT_TRUE(opens({}));
    EXPECT_EQ(log.lines(), QStringList{});
}

TEST_F(DesktopFileViewerTest, OpensTheFolderWhenThereIsNoFileManager)
{
    makeViewer(20s);
    viewer->selectFile(u"/tmp/a/b.txt"_s, u"/tmp/a"_s);
    EXPECT_TRUE(opens({u"/tmp/a"_s}));
    EXPECT_EQ(log.count(u"selectFile: no file manager shows the file ("_s), 1);
}

TEST_F(DesktopFileViewerTest, OpensTheFolderWhenThereIsNoThread)
{
    makeManager();
    makeViewer(20s);
    {
        const ThreadShortage shortage;
        viewer->selectFile(u"/tmp/a/b.txt"_s, u"/tmp/a"_s);
    }
    EXPECT_TRUE(opens({u"/tmp/a"_s}));
    EXPECT_EQ(log.lines(), QStringList{u"selectFile: no file manager shows the file (Resource temporarily "
                                       "unavailable), opening the folder"_s});
}

TEST_F(DesktopFileViewerTest, OpensTheFolderWhenTheFileManagerFails)
{
    makeManager();
    manager->command({u"fail"_s, u"com.example.Error"_s, u"no screen"_s});
    makeViewer(20s);
    viewer->selectFile(u"/tmp/a/b.txt"_s, u"/tmp/a"_s);
    EXPECT_TRUE(opens({u"/tmp/a"_s}));
    EXPECT_EQ(log.lines(),
              QStringList{u"selectFile: no file manager shows the file (no screen), opening the folder"_s});
}

TEST_F(DesktopFileViewerTest, OpensTheFolderWhenNobodyAnswersInTime)
{
    makeManager();
    manager->command({u"hold"_s});
    makeViewer(100ms);
    viewer->selectFile(u"/tmp/a/b.txt"_s, u"/tmp/a"_s);
    EXPECT_TRUE(opens({u"/tmp/a"_s}));
    EXPECT_EQ(log.lines(),
              QStringList{u"selectFile: no file manager shows the file (no answer), opening the folder"_s});
}

TEST_F(DesktopFileViewerTest, OpensTheFolderWithoutABus)
{
    bus.kill();
    makeViewer(20s);
    viewer->selectFile(u"/tmp/a/b.txt"_s, u"/tmp/a"_s);
    EXPECT_TRUE(opens({u"/tmp/a"_s}));
}

TEST_F(DesktopFileViewerTest, WaitsForNobody)
{
    makeManager();
    manager->command({u"hold"_s});
    makeViewer(20s);
    const auto start = std::chrono::steady_clock::now();
    viewer->selectFile(u"/tmp/1"_s, u"/tmp"_s);
    EXPECT_EQ(manager->next().value(4), u"file:///tmp/1"_s);
    viewer->selectFile(u"/tmp/2"_s, u"/tmp"_s);
    EXPECT_EQ(manager->next().value(4), u"file:///tmp/2"_s);
    viewer.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
    EXPECT_TRUE(opens({}));
}

} // namespace

} // namespace spotwell
