// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// Measures spotwell beside the programs that a radio amateur would run instead, and beside the floor: a
// window of the same toolkit with nothing in it. All get the same lines of the same node and take turns.

#include "bench/Report.h"
#include "bench/compare/Measures.h"
#include "bench/compare/Session.h"
#include "bench/compare/Tables.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

namespace
{

using namespace spotwell::bench;

QCommandLineOption option(const char* name, const char* words, const char* value = "",
                          const char* standard = "")
{
    return {QString::fromLatin1(name), QString::fromLatin1(words), QString::fromLatin1(value),
            QString::fromLatin1(standard)};
}

void print(const QString& text)
{
    std::fputs(text.toUtf8().constData(), stdout);
    std::fflush(stdout);
}

QString load()
{
    QFile file(QStringLiteral("/proc/loadavg"));
    const QStringList words = file.open(QIODevice::ReadOnly)
                                  ? QString::fromLatin1(file.readAll()).split(QLatin1Char(' '))
                                  : QStringList();
    return words.value(0);
}

Extent quickExtent()
{
    Extent extent;
    extent.lineSeconds = 8;
    extent.idleSeconds = 20;
    extent.searchSeconds = 2;
    extent.searchExactness = 2;
    return extent;
}

class Comparison
{
public:
    Comparison(std::vector<Contender> contenders, Extent extent)
        : contenders_(std::move(contenders)), extent_(std::move(extent)), figures_(contenders_.size())
    {
    }

    /// What each program does by itself; the programs take turns, and every round another one begins.
    void measure(int round)
    {
        std::fprintf(stderr, "round %d\n", round);
        for (std::size_t turn = 0; turn < contenders_.size(); ++turn) {
            const std::size_t which = (turn + static_cast<std::size_t>(round)) % contenders_.size();
            attempt("start and lines", which, [&] {
                Figures figures; // counted only when all went well
                measureStart(contenders_[which], extent_, figures);
                measureLines(contenders_[which], extent_, figures);
                for (const auto& [figure, values] : figures) {
                    std::vector<double>& all = figures_[which][figure];
                    all.insert(all.end(), values.begin(), values.end());
                }
            });
        }
    }

    /// All at the same time, each at a display of its own.
    void measureIdle()
    {
        std::vector<std::unique_ptr<Session>> sessions(contenders_.size());
        for (std::size_t which = 0; which < contenders_.size(); ++which)
            attempt("ready to idle", which,
                    [&] { sessions[which] = makeIdleSession(contenders_[which], extent_); });
        std::fprintf(stderr, "idle, load %s\n", qUtf8Printable(load()));
        spotwell::bench::measureIdle(sessions, extent_, figures_);
    }

    void measureHighestRates()
    {
        for (std::size_t which = 0; which < contenders_.size(); ++which) {
            if (!contenders_[which].connects)
                continue;
            attempt("highest rate", which, [&] {
                const QString end = measureHighestRate(contenders_[which], extent_, figures_[which]);
                ends_ += QStringLiteral("%1: %2\n")
                             .arg(contenders_[which].name,
                                  end.isEmpty() ? QStringLiteral("no higher rate was tried") : end);
            });
        }
    }

    /// Whether all was measured.
    [[nodiscard]] bool report() const
    {
        Tables tables;
        tables.figures = figures_;
        for (const Contender& contender : contenders_)
            tables.names += contender.name;
        print(QStringLiteral("%1; load now %2\n\nMedians (least to greatest)\n\n%3\n"
                             "Times the first program\n\n%4\nTargets\n\n%5\n")
                  .arg(machine(), load(), tables.measured(), tables.ratios(), tables.targets()));
        if (!ends_.isEmpty())
            print(QStringLiteral("Beyond the highest rate held\n\n%1").arg(ends_));
        if (!failures_.isEmpty())
            print(QStringLiteral("\nNot measured\n\n%1").arg(failures_));
        return failures_.isEmpty();
    }

private:
    /// What other programs' windows do is not ours: they get a second chance, and then are left out.
    void attempt(const char* what, std::size_t which, const std::function<void()>& measuring)
    {
        const QString& name = contenders_[which].name;
        for (const bool again : {true, false}) {
            std::fprintf(stderr, "%s: %s, load %s\n", what, qUtf8Printable(name), qUtf8Printable(load()));
            try {
                return measuring();
            } catch (const std::exception& problem) {
                std::fprintf(stderr, "  %s%s\n", problem.what(), again ? "; once more" : "");
                if (!again)
                    failures_ += QStringLiteral("%1, %2: %3\n")
                                     .arg(name, QLatin1String(what), QString::fromUtf8(problem.what()));
            }
        }
    }

    const std::vector<Contender> contenders_;
    const Extent extent_;
    std::vector<Figures> figures_;
    QString ends_;
    QString failures_;
};

int compare(const QCommandLineParser& options)
{
    const auto text = [&options](const char* name) { return options.value(QString::fromLatin1(name)); };
    const bool quick = options.isSet(QStringLiteral("quick"));
    Extent extent = quick ? quickExtent() : Extent();
    extent.pictures = text("pictures");
    const QStringList without = text("without").split(QLatin1Char(','));

    std::vector<QString> only;
    for (const QString& name : text("only").split(QLatin1Char(','), Qt::SkipEmptyParts))
        only.push_back(name);
    const QTemporaryDir klogHome;
    std::vector<Contender> all = contenders(text("programs"), klogHome.path());
    std::vector<Contender> wanted;
    std::copy_if(all.begin(), all.end(), std::back_inserter(wanted), [&only](const Contender& contender) {
        return only.empty() || std::find(only.begin(), only.end(), contender.name) != only.end();
    });
    if (wanted.empty())
        throw std::runtime_error("no program of that name");
    if (std::any_of(wanted.begin(), wanted.end(),
                    [](const Contender& contender) { return contender.name == QLatin1String("KLog"); })) {
        std::fprintf(stderr, "KLog sets itself up\n");
        makeKlogHome(klogHome.path());
    }

    Comparison comparison(std::move(wanted), extent);
    const int rounds = quick ? 1 : std::max(1, text("rounds").toInt());
    for (int round = 1; round <= rounds; ++round) {
        if (!without.contains(QStringLiteral("lines")))
            comparison.measure(round);
        if (!without.contains(QStringLiteral("idle")))
            comparison.measureIdle();
    }
    if (!without.contains(QStringLiteral("highest")))
        comparison.measureHighestRates();
    return comparison.report() ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QByteArray ownFolder = QCoreApplication::applicationDirPath().toUtf8();
    QCommandLineParser options;
    options.setApplicationDescription(QStringLiteral(
        "Measures spotwell, an empty Qt window, xdx, KLog, and nc in xterm side by side: 15 minutes."));
    options.addHelpOption();
    options.addOption(option("quick", "One short round: three minutes, and less exact."));
    options.addOption(option("rounds", "How often all but the highest rate is measured.", "count", "3"));
    options.addOption(
        option("only", "The programs, by their names in the table, separated by commas.", "names"));
    options.addOption(option("without", "What is not measured, of lines,idle,highest.", "parts"));
    options.addOption(option("pictures", "Also keeps X window dumps of the screens.", "folder"));
    options.addOption(option("programs", "Where spotwell is.", "folder", ownFolder.constData()));
    options.process(application);
    try {
        return compare(options);
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "spotwell-bench-compare: %s\n", problem.what());
        return 1;
    }
}
