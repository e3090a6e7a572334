// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/Report.h"

#include <QFile>
#include <QSysInfo>

#include <algorithm>
#include <cstddef>
#include <thread>
#include <utility>

namespace spotwell::bench
{

namespace
{

QString processorModel()
{
    QFile file(QStringLiteral("/proc/cpuinfo"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith("model name"))
            return QString::fromUtf8(line.mid(line.indexOf(':') + 1).trimmed());
    }
    return {};
}

} // namespace

double quantile(std::vector<double> values, double share)
{
    if (values.empty())
        return 0;
    const auto last = static_cast<double>(values.size() - 1);
    const auto at = values.begin() + static_cast<std::ptrdiff_t>(last * share + 0.5);
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

double median(std::vector<double> values)
{
    return quantile(std::move(values), 0.5);
}

QString inTable(const std::vector<double>& values, int decimals)
{
    const auto [least, greatest] = std::minmax_element(values.begin(), values.end());
    const QString shown = QString::number(median(values), 'f', decimals);
    if (values.size() < 2)
        return shown;
    return QStringLiteral("%1 (%2 to %3)")
        .arg(shown, QString::number(*least, 'f', decimals), QString::number(*greatest, 'f', decimals));
}

QString machine()
{
    return QStringLiteral("%1 x %2, Linux %3")
        .arg(std::thread::hardware_concurrency())
        .arg(processorModel(), QSysInfo::kernelVersion());
}

} // namespace spotwell::bench
