// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Log.h"
#include "platform/Time.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QSet>
#include <QString>

#include <initializer_list>
#include <optional>

namespace spotwell
{

// What the feeds that answer in JSON have in common: how an answer, its elements and their keys are read. A
// value of an unexpected kind is taken as null is, an array for a latitude say. All are callable from any
// thread.

/// What an answer may hold at most, so that reading it takes a bounded memory: objects and arrays, and values
/// of all kinds. Ten thousand spots have ten thousand objects and some 250,000 values.
inline constexpr qsizetype mostContainers = 200'000;
inline constexpr qsizetype mostValues = 4'000'000;

/// The array that the whole of `body` is (RFC 8259, in UTF-8; what is no UTF-8 inside of texts is replaced).
/// Absent when it is something else, cut off, or more than the above.
[[nodiscard]] std::optional<QJsonArray> spotsIn(const QByteArray& body);

/// The keys of a spot that a feed reads, the one of its id among them.
using SpotKeys = std::initializer_list<QLatin1String>;

/// By what `spot` is known to a feed: its number under `key`, whole numbers of 64 bits exact and 7.0 the same
/// as 7. A spot without such a number is known by all that `keysRead` say, as a negative number made of
/// their digest, so that their length does not matter.
[[nodiscard]] QJsonValue idOf(const QJsonObject& spot, QLatin1String key, SpotKeys keysRead);

/// Adds `id` to what a feed remembers. False when it was there before.
bool remember(QSet<QJsonValue>& remembered, const QJsonValue& id);

/// The text under `key`, as it was read: it may hold U+0000 and lone surrogates. Empty for null; absent when
/// there is no such key.
[[nodiscard]] std::optional<QString> textOf(const QJsonObject& spot, QLatin1String key);

/// What `value` prints as: a text is itself, a number has 16 digits at most, a whole one of 64 bits all of
/// its own; true and false are 1 and 0. Empty for all else.
[[nodiscard]] QString printedText(const QJsonValue& value);

/// The number under `key`, or the one that a text there begins with. Absent for all else, when there is no
/// such key, and beyond a double's range.
[[nodiscard]] std::optional<double> numberOf(const QJsonObject& spot, QLatin1String key);

/// The kilohertz under `key`, a number or a text that begins with one, in megahertz; 0 for all else.
[[nodiscard]] double megahertzOf(const QJsonObject& spot, QLatin1String key);

/// The time under `key`, of the form 2024-03-01T23:59:30 in UTC. Absent when it cannot be read.
[[nodiscard]] std::optional<TimePoint> timeOf(const QJsonObject& spot, QLatin1String key);

/// Tells the log of the elements of one answer that are no objects, in few enough lines that a service cannot
/// fill the disk with them.
class StrayElements
{
public:
    /// That many elements get a line of their own.
    static constexpr qsizetype mostLines = 20;

    /// `operation` is the name that begins the log lines; `log` must outlive this object.
    StrayElements(QLatin1String operation, Log& log) : operation_(operation), log_(log) {}

    /// The element at `index`, counted from 0, is none.
    void skip(qsizetype index);
    /// All elements were seen: says how many more there were.
    void end() const;

private:
    QLatin1String operation_;
    Log& log_;
    qsizetype count_ = 0;
};

} // namespace spotwell
