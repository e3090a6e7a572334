// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <chrono>
#include <functional>

namespace spotwell::simulator
{

/// The moments that the simulator measures: the system's monotonic clock (CLOCK_MONOTONIC).
using Moment = std::chrono::steady_clock::time_point;

/// One event as a JSON object on one line: "event" and "t" first, then its fields in the order they were
/// added. Only ASCII comes out.
class Event
{
public:
    Event(const char* name, Moment time);

    Event& with(const char* key, const QString& value);
    Event& with(const char* key, qint64 value);
    /// A number of seconds, with microseconds.
    Event& with(const char* key, std::chrono::duration<double> value);

    /// The line, its line feed included.
    [[nodiscard]] QByteArray line() const { return json_ + "}\n"; }

private:
    void key(const char* name);
    QByteArray json_;
};

/// Where events go.
class Report
{
public:
    using Sink = std::function<void(const QByteArray& line)>;

    explicit Report(Sink sink) : sink_(std::move(sink)) {}
    void add(const Event& event) const { sink_(event.line()); }

private:
    Sink sink_;
};

} // namespace spotwell::simulator
