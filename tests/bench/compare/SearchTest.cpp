// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/compare/Search.h"

#include <gtest/gtest.h>

#include <vector>

namespace spotwell::bench
{

namespace
{

struct SearchCase {
    SearchLimits limits;
    /// The greatest number that holds.
    int truth = 0;
    int found = 0;
    std::vector<int> asked;
};

class SearchTest : public testing::TestWithParam<SearchCase>
{
};

TEST_P(SearchTest, FindsTheGreatest)
{
    std::vector<int> asked;
    const int found = greatestThatHolds(GetParam().limits, [&](int number) {
        asked.push_back(number);
        return number <= GetParam().truth;
    });
    EXPECT_EQ(found, GetParam().found);
    EXPECT_EQ(asked, GetParam().asked);
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, SearchTest,
    testing::Values(
        SearchCase{{200, 25'600, 1.2}, 199, 0, {200}},
        SearchCase{{200, 25'600, 1.2}, 200, 200, {200, 800, 400, 283, 238}},
        SearchCase{{200, 25'600, 1.2}, 3'000, 2'691, {200, 800, 3'200, 1'600, 2'263, 2'691}},
        SearchCase{{200, 25'600, 1.2}, 25'599, 21'527, {200, 800, 3'200, 12'800, 25'600, 18'102, 21'527}},
        SearchCase{{200, 25'600, 1.2}, 1'000'000, 25'600, {200, 800, 3'200, 12'800, 25'600}},
        // So exact that there is no number left in between.
        SearchCase{{1, 10, 1.0}, 2, 2, {1, 4, 2, 3}},
        // The first is the most.
        SearchCase{{10, 10, 1.2}, 10, 10, {10}}));

} // namespace

} // namespace spotwell::bench
