// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/support/web/UrlTransfers.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

namespace spotwell
{

namespace
{

constexpr UrlSessionLimits accountLimits{.body = 1500, .start = 1000, .held = 2500, .answer = 100};

class UrlAccounts : public testing::Test
{
protected:
    WakeUp released;
    const std::shared_ptr<UrlAccount> account = std::make_shared<UrlAccount>(accountLimits, released);
};

TEST_F(UrlAccounts, AllowsStartsBelowTheStartLimit)
{
    UrlBooking booking(account);
    EXPECT_TRUE(booking.addBody(899));
    EXPECT_TRUE(account->hasRoomToStart());
    EXPECT_TRUE(booking.addBody(1));
    EXPECT_FALSE(account->hasRoomToStart());
}

TEST_F(UrlAccounts, BooksUpToTheHardLimit)
{
    UrlBooking booking(account);
    EXPECT_TRUE(booking.addBody(2000));
    EXPECT_FALSE(booking.addBody(401));
    EXPECT_TRUE(booking.addBody(400));
    EXPECT_FALSE(booking.addBody(1));
}

TEST_F(UrlAccounts, BooksEachAnswerEvenWithoutRoom)
{
    UrlBooking full(account);
    ASSERT_TRUE(full.addBody(2400));
    std::vector<UrlBooking> errors;
    for (int i = 0; i < 10; ++i)
        errors.emplace_back(account);
    full = {};
    EXPECT_FALSE(account->hasRoomToStart());
    errors.pop_back();
    EXPECT_TRUE(account->hasRoomToStart());
}

TEST_F(UrlAccounts, GivesBackTheBodyFirstAndTheRestInTheEnd)
{
    UrlBooking other(account);
    ASSERT_TRUE(other.addBody(800));
    {
        UrlBooking booking(account);
        ASSERT_TRUE(booking.addBody(1500));
        booking.dropBody();
        EXPECT_FALSE(account->hasRoomToStart());
        EXPECT_FALSE(other.addBody(1501));
        EXPECT_TRUE(other.addBody(1500));
        EXPECT_FALSE(other.addBody(1));
    }
    EXPECT_TRUE(other.addBody(100));
    EXPECT_FALSE(other.addBody(1));
}

TEST_F(UrlAccounts, MovesWhatIsBooked)
{
    UrlBooking first(account);
    ASSERT_TRUE(first.addBody(2400));
    UrlBooking second(std::move(first));
    EXPECT_FALSE(account->hasRoomToStart());
    UrlBooking third;
    third = std::move(second);
    EXPECT_FALSE(account->hasRoomToStart());
    third = {};
    EXPECT_TRUE(account->hasRoomToStart());
}

TEST_F(UrlAccounts, WakesWhenThereIsRoomAgain)
{
    UrlBooking large(account);
    ASSERT_TRUE(large.addBody(899));
    large.dropBody();
    EXPECT_FALSE(released.isAwake());
    ASSERT_TRUE(large.addBody(800));
    {
        const UrlBooking last(account);
        EXPECT_FALSE(account->hasRoomToStart());
    }
    EXPECT_TRUE(released.isAwake());
    released.clear();
    ASSERT_TRUE(large.addBody(100));
    {
        const UrlBooking more(account);
    }
    EXPECT_FALSE(released.isAwake());
    large.dropBody();
    EXPECT_TRUE(released.isAwake());
}

} // namespace

} // namespace spotwell
