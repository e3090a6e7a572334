// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/Report.h"

namespace spotwell::simulator
{
namespace
{

QByteArray quoted(const QString& text)
{
    QByteArray result = "\"";
    for (const QChar character : text) {
        const char16_t unit = character.unicode();
        if (unit == u'"' || unit == u'\\')
            result.append('\\').append(static_cast<char>(unit));
        else if (unit >= 0x20 && unit < 0x7F)
            result.append(static_cast<char>(unit));
        else
            result.append("\\u" + QByteArray::number(unit, 16).rightJustified(4, '0'));
    }
    return result + '"';
}

QByteArray microseconds(std::chrono::duration<double> seconds)
{
    return QByteArray::number(seconds.count(), 'f', 6);
}

} // namespace

Event::Event(const char* name, Moment time)
    : json_("{\"event\":" + quoted(QString::fromLatin1(name)) +
            ",\"t\":" + microseconds(time.time_since_epoch()))
{
}

void Event::key(const char* name)
{
    json_.append(",\"").append(name).append("\":");
}

Event& Event::with(const char* name, const QString& value)
{
    key(name);
    json_.append(quoted(value));
    return *this;
}

Event& Event::with(const char* name, qint64 value)
{
    key(name);
    json_.append(QByteArray::number(value));
    return *this;
}

Event& Event::with(const char* name, std::chrono::duration<double> value)
{
    key(name);
    json_.append(microseconds(value));
    return *this;
}

} // namespace spotwell::simulator
