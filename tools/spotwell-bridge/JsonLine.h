// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QJsonValue>
#include <QString>

#include <cstdint>

namespace spotwell::bridge
{

/// A JSON object on one line whose members stand in the order they were added, which QJsonObject would not
/// keep.
class JsonLine
{
public:
    void add(const QString& key, const QJsonValue& value);
    void add(const QString& key, const JsonLine& object);
    /// The finished object, without a line feed.
    [[nodiscard]] QByteArray text() const { return '{' + members_ + '}'; }

private:
    void addText(const QString& key, const QByteArray& value);

    QByteArray members_;
};

/// A point in time, in microseconds since 1970-01-01T00:00:00Z, as ISO 8601 UTC with six decimals. Years that
/// take more than four digits are beyond that form: such a time is given as the number.
[[nodiscard]] QString isoTime(std::int64_t microseconds);

} // namespace spotwell::bridge
