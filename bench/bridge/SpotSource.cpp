// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/bridge/SpotSource.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <system_error>

namespace spotwell::bench
{

namespace
{

constexpr const char* path = "/com/tarnbrooksoftware/DistributedNotifications";
constexpr const char* interface = "com.tarnbrooksoftware.DistributedNotifications";
constexpr const char* member = "Posted";
constexpr const char* signature = "ssa{sv}";
constexpr const char* object = "string object";
/// 2027-02-03T09:05:07Z, in microseconds.
constexpr std::int64_t webSpotTime = 1'801'645'507'000'000;

void check(int result, const char* what)
{
    if (result < 0)
        throw std::system_error(-result, std::generic_category(), what);
}

/// A spot as the line that telnet clients hear, without its end.
std::string hearableLine(const std::string& comment)
{
    std::array<char, 128> line{};
    (void)std::snprintf(line.data(), line.size(), "DX de %-10s%8.1f  %-12s %-30s %s", "N0CALL:", 14074.0,
                        "X1X", comment.c_str(), "0905Z JN34");
    return line.data();
}

/// A comment by which the spot is told from all others.
std::string commentOf(std::size_t number)
{
    std::array<char, 32> text{};
    (void)std::snprintf(text.data(), text.size(), "#%07zu CW 24 dB 21 WPM", number);
    return text.data();
}

} // namespace

SpotSource::SpotSource(const std::string& busAddress)
{
    sd_bus* bus = nullptr;
    check(sd_bus_new(&bus), "bus");
    bus_.reset(bus);
    check(sd_bus_set_address(bus, busAddress.c_str()), "address");
    check(sd_bus_set_bus_client(bus, 1), "client");
    check(sd_bus_start(bus), "start");
    // Waits for the name, and so for the bus; from then on messages leave at once.
    const char* name = nullptr;
    check(sd_bus_get_unique_name(bus, &name), "name");
}

SpotKind SpotSource::kindOf(std::size_t number)
{
    return number % 2 == 0 ? SpotKind::line : SpotKind::web;
}

void SpotSource::post()
{
    const std::size_t number = count();
    const std::string comment = commentOf(number);
    const std::string line = hearableLine(comment);
    text_ += line;
    text_ += "\r\n";
    ends_.push_back(text_.size());
    posted_.push_back(Clock::now());
    check(kindOf(number) == SpotKind::line ? postLine(line) : postWebSpot(comment), "post");
    check(sd_bus_flush(bus_.get()), "flush");
}

int SpotSource::postLine(const std::string& line) const
{
    return sd_bus_emit_signal(bus_.get(), path, interface, member, signature,
                              "com.tarnbrooksoftware.spotwell_line", object, 2, //
                              "line", "s", line.c_str(), "source", "s", "dxc.example.org");
}

int SpotSource::postWebSpot(const std::string& comment) const
{
    return sd_bus_emit_signal(bus_.get(), path, interface, member, signature,
                              "com.tarnbrooksoftware.spotwell_spot", object, 10, //
                              "combinedCallsign", "s", "X1X",                    //
                              "mode", "s", "CW",                                 //
                              "timestamp", "x", webSpotTime,                     //
                              "megahertz", "d", 14.074,                          //
                              "comments", "s", comment.c_str(),                  //
                              "source", "s", "DXSummit",                         //
                              "grid", "s", "JN34",                               //
                              "latitude", "d", 44.5,                             //
                              "longitude", "d", 7.0,                             //
                              "dxde_call", "s", "N0CALL");
}

} // namespace spotwell::bench
