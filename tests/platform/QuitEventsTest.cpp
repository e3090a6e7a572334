// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/QuitEvents.h"

#include "tests/support/WaitUntil.h"

#include <QEvent>
#include <gtest/gtest.h>

namespace spotwell
{

namespace
{

/// Keeps the types of the events that get to an object, and stops them there.
class EventWitness final : public QObject
{
public:
    bool eventFilter(QObject*, QEvent* event) override
    {
        types.append(event->type());
        return true;
    }
    bool event(QEvent* event) override
    {
        types.append(event->type());
        return true;
    }

    QList<QEvent::Type> types;
};

struct QuitEventsTest : testing::Test {
    // The filter installed last sees an event first: what the witness sees has passed.
    QuitEventsTest() { QCoreApplication::instance()->installEventFilter(&behind); }

    EventWitness behind;
    int requests = 0;
};

} // namespace

TEST_F(QuitEventsTest, ARequestToQuitBecomesACallAndGoesNoFurther)
{
    const QuitEvents quitEvents([this] { ++requests; });
    QEvent quit(QEvent::Quit);
    EXPECT_TRUE(QCoreApplication::sendEvent(QCoreApplication::instance(), &quit));
    EXPECT_EQ(requests, 1);
    EXPECT_EQ(behind.types, QList<QEvent::Type>());
    QCoreApplication::sendEvent(QCoreApplication::instance(), &quit);
    EXPECT_EQ(requests, 2);
}

TEST_F(QuitEventsTest, AnEventThatWaitedInTheQueueCountsToo)
{
    const QuitEvents quitEvents([this] { ++requests; });
    QCoreApplication::postEvent(QCoreApplication::instance(), new QEvent(QEvent::Quit));
    EXPECT_EQ(requests, 0);
    EXPECT_TRUE(waitUntil([this] { return requests == 1; }));
    EXPECT_FALSE(behind.types.contains(QEvent::Quit));
}

TEST_F(QuitEventsTest, OtherEventsPass)
{
    const QuitEvents quitEvents([this] { ++requests; });
    for (const QEvent::Type type : {QEvent::Close, QEvent::ApplicationActivate, QEvent::User}) {
        QEvent event(type);
        QCoreApplication::sendEvent(QCoreApplication::instance(), &event);
        EXPECT_EQ(behind.types, QList<QEvent::Type>{type});
        behind.types.clear();
    }
    EXPECT_EQ(requests, 0);
}

TEST_F(QuitEventsTest, OtherReceiversGetTheirs)
{
    EventWitness receiver;
    const QuitEvents quitEvents([this] { ++requests; });
    QCoreApplication::instance()->removeEventFilter(&behind);
    QEvent quit(QEvent::Quit);
    QCoreApplication::sendEvent(&receiver, &quit);
    EXPECT_EQ(receiver.types, QList<QEvent::Type>{QEvent::Quit});
    EXPECT_EQ(requests, 0);
}

TEST_F(QuitEventsTest, NothingIsCaughtAfterwards)
{
    {
        const QuitEvents quitEvents([this] { ++requests; });
    }
    QEvent quit(QEvent::Quit);
    QCoreApplication::sendEvent(QCoreApplication::instance(), &quit);
    EXPECT_EQ(requests, 0);
    EXPECT_EQ(behind.types, QList<QEvent::Type>{QEvent::Quit});
}

} // namespace spotwell
