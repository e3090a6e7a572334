// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// Measures the shipped program between a node and a logger, on a session bus and a display of its own.

#include "bench/end-to-end/Summary.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <cstdio>
#include <exception>

namespace
{

using namespace spotwell::bench;

QCommandLineOption option(const char* name, const char* words, const char* value, const char* standard)
{
    return {QString::fromLatin1(name), QString::fromLatin1(words), QString::fromLatin1(value),
            QString::fromLatin1(standard)};
}

int measure(const QCommandLineParser& options)
{
    const auto number = [&options](const char* name) {
        return std::max(0, options.value(QString::fromLatin1(name)).toInt());
    };
    RunSettings settings;
    settings.programs = options.value(QStringLiteral("programs"));
    settings.seconds = std::max(1, number("seconds"));
    Summary summary;
    summary.seconds = settings.seconds;
    summary.idleSeconds = number("idle");

    // Runs of the rates take turns, so that what the machine does besides falls on all of them.
    const QStringList rates = options.value(QStringLiteral("rates")).split(QLatin1Char(','));
    for (int run = 1; run <= std::max(1, number("runs")); ++run) {
        for (const QString& rate : rates) {
            settings.rate = std::max(1, rate.toInt());
            // Without lines all rates are the same: the first will do.
            settings.idleSeconds = rate == rates.constFirst() ? summary.idleSeconds : 0;
            std::fprintf(stderr, "run %d at %d lines a second\n", run, settings.rate);
            summary.runs[settings.rate].push_back(runSpotwell(settings));
        }
        settings.rate = summary.runs.begin()->first;
        std::fprintf(stderr, "run %d of the bare window\n", run);
        summary.bareWindow.push_back(runBareWindow(settings));
    }

    std::fputs(summary.table().toUtf8().constData(), stdout);
    const QString path = options.value(QStringLiteral("json"));
    if (path.isEmpty())
        return 0;
    QFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(summary.json()) > 0)
        return 0;
    std::fprintf(stderr, "cannot write %s\n", qUtf8Printable(path));
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QByteArray ownFolder = QCoreApplication::applicationDirPath().toUtf8();
    QCommandLineParser options;
    options.addHelpOption();
    options.addOption(option("rates", "Lines a second, separated by commas.", "rates", "200,1000"));
    options.addOption(option("seconds", "How long lines come.", "seconds", "30"));
    options.addOption(option("idle", "How long the program is watched without lines.", "seconds", "60"));
    options.addOption(option("runs", "How often all is repeated.", "count", "3"));
    options.addOption(option("json", "Also writes every run to this file.", "file", ""));
    options.addOption(option("programs", "Where the programs are.", "folder", ownFolder.constData()));
    options.process(application);
    try {
        return measure(options);
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "spotwell-bench-end-to-end: %s\n", problem.what());
        return 1;
    }
}
