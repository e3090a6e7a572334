// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/ServiceManager.h"

#include "tests/support/WaitUntil.h"
#include "tests/tools/bridge/program/Manager.h"

#include <gtest/gtest.h>

namespace spotwell::bridge
{

namespace
{

using namespace Qt::Literals::StringLiterals;

QByteArray addressOf(const Manager& manager)
{
    return QByteArray::fromStdString(manager.address());
}

TEST(ServiceManager, IsToldWhateverItsAddress)
{
    Manager atPath;
    // As long as an address can be: the path's zero is the last byte.
    const std::string folder = atPath.address().substr(0, atPath.address().rfind('/') + 1);
    Manager atLongPath(folder + std::string(sizeof(sockaddr_un::sun_path) - 1 - folder.size(), 'x'));
    Manager abstract("@spotwell-bridge-test-" + std::to_string(::getpid()));
    for (Manager* manager : {&atPath, &atLongPath, &abstract}) {
        ServiceManager service(addressOf(*manager));
        service.status(u"Grüße"_s);
        service.ready();
        service.stopping();
        EXPECT_EQ(manager->next(), "STATUS=Gr\xC3\xBC\xC3\x9F"
                                   "e");
        EXPECT_EQ(manager->next(), "READY=1");
        EXPECT_EQ(manager->next(), "STOPPING=1\nSTATUS=Ending");
        EXPECT_EQ(manager->next(0), "");
    }
}

TEST(ServiceManager, IsNobodyAtAnOddAddress)
{
    const Manager manager;
    const QByteArray address = addressOf(manager);
    const QByteArray folder = address.first(address.lastIndexOf('/'));
    for (const QByteArray& odd :
         {QByteArray(), QByteArray("@"), QByteArray("/"), QByteArray("relative"), QByteArray("vsock:1:2"),
          QByteArray("/dev/null"), QByteArray("@nobody-here"), folder, folder + "/nobody",
          '/' + QByteArray(sizeof(sockaddr_un::sun_path) - 1, 'x'), '/' + QByteArray(1000, 'x')}) {
        ServiceManager service(odd);
        service.status(u"Receiving spots"_s);
        service.ready();
        service.stopping();
    }
}

TEST(ServiceManager, IsNotWaitedForAndLearnsInTheEndThatTheProgramIsReady)
{
    Manager manager;
    const int count = manager.fill();
    ServiceManager service(addressOf(manager));
    service.status(u"Receiving spots"_s);
    const auto begin = Alarm::Clock::now();
    service.ready();
    for (int i = 0; i < count; ++i)
        EXPECT_EQ(manager.next(0), "x");
    std::string next;
    EXPECT_TRUE(waitUntil([&] { return !(next = manager.next(0)).empty(); }));
    EXPECT_EQ(next, "READY=1") << "and nothing of what it did meanwhile";
    EXPECT_GE(Alarm::Clock::now() - begin, std::chrono::seconds{1});
    EXPECT_EQ(manager.next(0), "");
}

} // namespace

} // namespace spotwell::bridge
