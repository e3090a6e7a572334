// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/soak/SoakWeb.h"

#include "tests/integration/support/FeedAnswers.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace spotwell::bench
{

namespace
{

constexpr int shownAtOnce = 20;
/// The program pauses for a tenth of a second after each new spot.
constexpr std::uint64_t answersOfASpot = 4;

constexpr std::array addresses{"https://api.pota.app/spot/activator", "http://www.dxsummit.fi/api/v1/spots",
                               "http://www.wsprnet.org/drupal/wsprnet/spots"};

/// A row in which the number is the time in minutes, over many days.
std::string wsprRow(int number)
{
    constexpr int minutesOfDay = 24 * 60;
    std::array<char, 32> time{};
    (void)std::snprintf(time.data(), time.size(), "2024-03-%02d %02d:%02d", 1 + number / minutesOfDay % 28,
                        number % minutesOfDay / 60, number % 60);
    std::string row = wsprnetRow(number);
    const std::string mark = "&nbsp;";
    const auto begin = row.find(mark) + mark.size();
    row.replace(begin, row.find(mark, begin) - begin, time.data());
    return row;
}

} // namespace

SoakWeb::SoakWeb(FeedServices& services, std::uint64_t answers) : wanted_(answers)
{
    for (std::size_t feed = 0; feed < addresses.size(); ++feed) {
        services.answer(addresses[feed],
                        [this, feed](LoopbackHttpServer::Connection& connection, const std::string&) {
                            connection.answer("200 OK", bodyOf(feed));
                        });
    }
}

std::string SoakWeb::bodyOf(std::size_t feed)
{
    if (const std::uint64_t before = answered_.fetch_add(1); before < wanted_ && before % answersOfASpot == 0)
        ++newest_[feed];
    const int newest = newest_[feed];
    const bool isPage = feed == 2;
    std::string body = isPage ? "<html><body><table>\n" : "[";
    for (int number = newest; number > std::max(0, newest - shownAtOnce); --number) {
        if (!isPage && number < newest)
            body += ',';
        body += feed == 0 ? potaElement(number) : feed == 1 ? dxSummitElement(number) : wsprRow(number);
    }
    return body + (isPage ? "</table></body></html>\n" : "]");
}

std::uint64_t SoakWeb::spots() const
{
    std::uint64_t spots = 0;
    for (const auto& newest : newest_)
        spots += static_cast<std::uint64_t>(newest.load());
    return spots;
}

SoakWeb::Spot SoakWeb::spotOf(std::string_view call)
{
    // "N123A": the first of a row of calls.
    Spot spot{0, 0};
    if (call.size() > 2) {
        std::from_chars(call.data() + 1, call.data() + call.size() - 1, spot.number);
        spot.feed = static_cast<std::size_t>(std::clamp(call.back() - 'A', 0, 2));
    }
    return spot;
}

} // namespace spotwell::bench
