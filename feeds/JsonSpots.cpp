#include "feeds/JsonSpots.h"

#include "util/StringAdditions.h"
#include "util/TimeFormats.h"

#include <QCryptographicHash>
#include <QJsonDocument>

namespace spotwell
{

std::optional<QJsonArray> spotsIn(const QByteArray& body)
{
    const QJsonDocument answer = QJsonDocument::fromJson(body);
    if (!answer.isArray())
        return std::nullopt;
    return answer.array();
}

QJsonValue idOf(const QJsonObject& spot, QLatin1String key)
{
    QJsonValue id = spot.value(key);
    if (id.isDouble())
        return id;
    const QByteArray all = QJsonDocument(spot).toJson(QJsonDocument::Compact);
    return QString::fromLatin1(QCryptographicHash::hash(all, QCryptographicHash::Sha256));
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

std::optional<double> numberOf(const QJsonObject& spot, QLatin1String key)
{
    const auto found = spot.constFind(key);
    if (found == spot.constEnd() || !found->isDouble())
        return std::nullopt;
    return found->toDouble();
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
