// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/web/LateUrlSession.h"

#include "tests/fakes/FakeTime.h"

#include <QStringList>
#include <gtest/gtest.h>

namespace spotwell
{

namespace
{

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

/// Notes what it is asked for and answers when told.
class NotedUrlSession final : public UrlSession
{
public:
    explicit NotedUrlSession(QStringList& journal) : journal_(journal) {}

    void dataTask(const QString& url, CompletionHandler completionHandler) override
    {
        journal_.append(u"get "_s + url);
        completionHandler({"answer", UrlResponse{200}, {}});
    }
    bool pause(Seconds duration) override
    {
        journal_.append(u"pause %1"_s.arg(duration.count()));
        return false;
    }

private:
    QStringList& journal_;
};

class LateUrlSessionTest : public testing::Test
{
protected:
    UrlSession::CompletionHandler handler()
    {
        return [this](const UrlResult& result) {
            journal.append(result.error ? u"error "_s + *result.error : QString::fromUtf8(result.body));
        };
    }

    QStringList journal;
    QString missing;
    std::unique_ptr<FakeSerialQueue> owned = std::make_unique<FakeSerialQueue>();
    FakeSerialQueue& queue = *owned;
    LateUrlSession session{std::move(owned), [this](QString& error) -> std::unique_ptr<UrlSession> {
                               journal.append(u"make"_s);
                               error = missing;
                               if (!missing.isEmpty())
                                   return nullptr;
                               return std::make_unique<NotedUrlSession>(journal);
                           }};
};

TEST_F(LateUrlSessionTest, IsMadeOnTheQueueWithTheFirstTransfer)
{
    EXPECT_EQ(journal, QStringList());
    session.dataTask(u"a"_s, handler());
    session.dataTask(u"b"_s, handler());
    EXPECT_EQ(journal, QStringList());
    queue.runPending();
    EXPECT_EQ(journal, (QStringList{u"make"_s, u"get a"_s, u"answer"_s, u"get b"_s, u"answer"_s}));
}

TEST_F(LateUrlSessionTest, NeedsTheQueueNoMoreThen)
{
    session.dataTask(u"a"_s, handler());
    queue.runPending();
    journal.clear();
    session.dataTask(u"b"_s, handler());
    EXPECT_EQ(journal, (QStringList{u"get b"_s, u"answer"_s}));
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST_F(LateUrlSessionTest, SaysWhyItCannotBeMadeAndTriesAgain)
{
    missing = u"no such module"_s;
    session.dataTask(u"a"_s, handler());
    session.dataTask(u"b"_s, handler());
    queue.runPending();
    EXPECT_EQ(journal,
              (QStringList{u"make"_s, u"error no such module"_s, u"make"_s, u"error no such module"_s}));

    journal.clear();
    missing.clear();
    session.dataTask(u"c"_s, handler());
    queue.runPending();
    EXPECT_EQ(journal, (QStringList{u"make"_s, u"get c"_s, u"answer"_s}));
}

TEST_F(LateUrlSessionTest, PausesWhoeverRunsTheHandler)
{
    missing = u"no such module"_s;
    session.dataTask(u"a"_s, [this](const UrlResult&) { EXPECT_TRUE(session.pause(2s)); });
    queue.runPending();
    EXPECT_EQ(queue.pauses, std::vector<Seconds>{2s});

    missing.clear();
    journal.clear();
    session.dataTask(u"b"_s, [this](const UrlResult&) { EXPECT_FALSE(session.pause(3s)); });
    queue.runPending();
    EXPECT_EQ(journal, (QStringList{u"make"_s, u"get b"_s, u"pause 3"_s}));
    EXPECT_EQ(queue.pauses, std::vector<Seconds>{2s});
}

} // namespace

} // namespace spotwell
