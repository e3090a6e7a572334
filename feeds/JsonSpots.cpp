// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "feeds/JsonSpots.h"

#include "util/StringAdditions.h"
#include "util/TimeFormats.h"

#include <QCryptographicHash>
#include <QJsonDocument>
#include <QVariant>
#include <QtEndian>

#include <cmath>
#include <cstring>
#include <limits>

namespace spotwell
{

namespace
{

/// How often `character`, a rare one, occurs.
qsizetype countOf(char character, QByteArrayView body)
{
    qsizetype count = 0;
    while (const void* const found =
               std::memchr(body.data(), character, static_cast<std::size_t>(body.size()))) {
        ++count;
        body = body.sliced(static_cast<const char*>(found) + 1 - body.data());
    }
    return count;
}

/// Whether `body` can be read within a bounded memory. What looks like structure inside of texts counts, too.
/// Each container and each value takes two bytes at least, so only a large body needs to be looked at.
bool isModest(QByteArrayView body)
{
    if (body.size() > 2 * mostContainers && countOf('[', body) + countOf('{', body) > mostContainers)
        return false;
    return body.size() <= 2 * mostValues || countOf(',', body) < mostValues;
}

} // namespace

std::optional<QJsonArray> spotsIn(const QByteArray& body)
{
    if (!isModest(body))
        return std::nullopt;
    QJsonParseError error;
    QJsonDocument answer = QJsonDocument::fromJson(body, &error);
    // The reader refuses the whole for one odd byte in one text.
    if (error.error == QJsonParseError::IllegalUTF8String)
        answer = QJsonDocument::fromJson(QString::fromUtf8(body).toUtf8());
    if (!answer.isArray())
        return std::nullopt;
    return answer.array();
}

QJsonValue idOf(const QJsonObject& spot, QLatin1String key, SpotKeys keysRead)
{
    QJsonValue id = spot.value(key);
    if (id.isDouble())
        return id;
    QJsonObject read;
    for (const QLatin1String readKey : keysRead) {
        if (const auto found = spot.constFind(readKey); found != spot.constEnd())
            read.insert(readKey, *found);
    }
    const QByteArray all = QJsonDocument(read).toJson(QJsonDocument::Compact);
    const QByteArray digest = QCryptographicHash::hash(all, QCryptographicHash::Sha256);
    return qFromBigEndian<qint64>(digest.constData()) | std::numeric_limits<qint64>::min();
}

bool remember(QSet<QJsonValue>& remembered, const QJsonValue& id)
{
    const qsizetype before = remembered.size();
    remembered.insert(id);
    return remembered.size() > before;
}

std::optional<QString> textOf(const QJsonObject& spot, QLatin1String key)
{
    const auto found = spot.constFind(key);
    if (found == spot.constEnd())
        return std::nullopt;
    return found->toString();
}

QString printedText(const QJsonValue& value)
{
    if (value.isBool())
        return QString::number(static_cast<int>(value.toBool()));
    if (!value.isDouble())
        return value.toString();
    const QVariant number = value.toVariant();
    return number.typeId() == QMetaType::LongLong ? number.toString()
                                                  : QString::number(number.toDouble(), 'g', 16);
}

std::optional<double> numberOf(const QJsonObject& spot, QLatin1String key)
{
    const auto found = spot.constFind(key);
    if (found == spot.constEnd())
        return std::nullopt;
    if (found->isDouble())
        return found->toDouble();
    const std::optional<double> number = leadingNumber(found->toString());
    return number && std::isfinite(*number) ? number : std::nullopt;
}

double megahertzOf(const QJsonObject& spot, QLatin1String key)
{
    const auto found = spot.constFind(key);
    if (found == spot.constEnd())
        return 0.0;
    const double kilohertz = found->isString() ? doubleValue(found->toString()) : found->toDouble();
    return kilohertz / 1000.0;
}

std::optional<TimePoint> timeOf(const QJsonObject& spot, QLatin1String key)
{
    const auto found = spot.constFind(key);
    if (found == spot.constEnd())
        return std::nullopt;
    return jsonDateAndTime(found->toString());
}

void StrayElements::skip(qsizetype index)
{
    if (++count_ <= mostLines)
        log_.line(QStringLiteral("%1:spot is not an object:[%2]").arg(operation_).arg(index));
}

void StrayElements::end() const
{
    if (count_ > mostLines)
        log_.line(
            QStringLiteral("%1:more spots are not objects:[%2]").arg(operation_).arg(count_ - mostLines));
}

} // namespace spotwell
