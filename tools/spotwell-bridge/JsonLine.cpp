// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/JsonLine.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <chrono>

namespace spotwell::bridge
{

namespace
{

constexpr std::int64_t year0 = -62167219200'000000;
constexpr std::int64_t year10000 = 253402300800'000000;

/// The text of a value alone, which QJsonDocument gives for arrays and objects only.
QByteArray valueText(const QJsonValue& value)
{
    const QByteArray array = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return array.sliced(1, array.size() - 2);
}

} // namespace

void JsonLine::add(const QString& key, const QJsonValue& value)
{
    addText(key, valueText(value));
}

void JsonLine::add(const QString& key, const JsonLine& object)
{
    addText(key, object.text());
}

void JsonLine::addText(const QString& key, const QByteArray& value)
{
    if (!members_.isEmpty())
        members_ += ',';
    members_ += valueText(key) + ':' + value;
}

QString isoTime(std::int64_t microseconds)
{
    using namespace std::chrono;
    if (microseconds < year0 || microseconds >= year10000)
        return QString::number(microseconds);
    const sys_time<std::chrono::microseconds> time{std::chrono::microseconds{microseconds}};
    const auto day = floor<days>(time);
    const year_month_day date{day};
    const hh_mm_ss clock{time - day};
    return QString::asprintf(
        "%04d-%02u-%02uT%02d:%02d:%02d.%06dZ", static_cast<int>(date.year()),
        static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
        static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
        static_cast<int>(clock.seconds().count()), static_cast<int>(clock.subseconds().count()));
}

} // namespace spotwell::bridge
