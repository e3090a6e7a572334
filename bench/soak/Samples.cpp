// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/soak/Samples.h"

#include "bench/ProcessFigures.h"

#include <algorithm>

namespace spotwell::bench
{

Sample sampleOf(qint64 process)
{
    const MemoryFigures memory = memoryOf(process);
    return {.resident = residentOf(process),
            .proportional = memory.proportional,
            .anonymous = memory.anonymous,
            .descriptors = descriptorsOf(process),
            .threads = threadsOf(process)};
}

Course courseOf(const std::vector<Sample>& samples, qint64 Sample::*figure)
{
    Course course;
    if (samples.empty())
        return course;
    const auto count = static_cast<double>(samples.size());
    const std::size_t tenth = std::max<std::size_t>(1, samples.size() / 10);
    double linesMean = 0;
    double mean = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const auto value = static_cast<double>(samples[i].*figure);
        course.greatest = std::max(course.greatest, value);
        if (i < tenth)
            course.first += value / static_cast<double>(tenth);
        if (i >= samples.size() - tenth)
            course.last += value / static_cast<double>(tenth);
        mean += value / count;
        linesMean += static_cast<double>(samples[i].lines) / count;
    }
    double covariance = 0;
    double variance = 0;
    for (const Sample& sample : samples) {
        const double lines = static_cast<double>(sample.lines) - linesMean;
        covariance += lines * (static_cast<double>(sample.*figure) - mean);
        variance += lines * lines;
    }
    course.slope = variance > 0 ? covariance / variance * 100'000 : 0;
    return course;
}

QByteArray tableOf(const std::vector<Sample>& samples)
{
    QString table = QStringLiteral("seconds,lines,resident,proportional,anonymous,descriptors,threads\n");
    for (const Sample& sample : samples) {
        table += QStringLiteral("%1,%2,%3,%4,%5,%6,%7\n")
                     .arg(sample.seconds, 0, 'f', 1)
                     .arg(sample.lines)
                     .arg(sample.resident)
                     .arg(sample.proportional)
                     .arg(sample.anonymous)
                     .arg(sample.descriptors)
                     .arg(sample.threads);
    }
    return table.toLatin1();
}

} // namespace spotwell::bench
