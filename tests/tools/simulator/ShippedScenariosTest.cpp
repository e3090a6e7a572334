// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/Scenario.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <gtest/gtest.h>

namespace spotwell::simulator
{
namespace
{

QDir shipped()
{
    return QDir{QStringLiteral(SHIPPED_SCENARIOS)};
}

QStringList shippedFiles()
{
    return shipped().entryList({u"*.scenario"_qs}, QDir::Files, QDir::Name);
}

QByteArray contents(const QString& path)
{
    QFile file{path};
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return file.readAll();
}

TEST(ShippedScenarios, parse)
{
    EXPECT_GE(shippedFiles().size(), 24);
    for (const QString& file : shippedFiles()) {
        const auto read = readScenario(shipped().filePath(file));
        const auto* error = std::get_if<ScenarioError>(&read);
        EXPECT_EQ(error, nullptr) << qPrintable(error->text());
    }
}

TEST(ShippedScenarios, beginWithWhatTheyAre)
{
    for (const QString& file : shippedFiles())
        EXPECT_TRUE(contents(shipped().filePath(file)).startsWith("# ")) << qPrintable(file);
}

TEST(ShippedScenarios, areAllInTheDocument)
{
    const QString document = QString::fromUtf8(contents(QStringLiteral(SCENARIO_DOCUMENT)));
    for (const QString& file : shippedFiles()) {
        const QString name = file.chopped(9);
        EXPECT_TRUE(document.contains(u"| `"_qs + name + u"` |"_qs)) << qPrintable(name);
    }
}

TEST(ShippedScenarios, documentsExamplesParse)
{
    const QString document = QString::fromUtf8(contents(QStringLiteral(SCENARIO_DOCUMENT)));
    static const QRegularExpression example{u"```scenario\n(.*?)```"_qs,
                                            QRegularExpression::DotMatchesEverythingOption};
    int count = 0;
    for (auto match = example.globalMatch(document); match.hasNext(); ++count) {
        const QByteArray text = match.next().captured(1).toUtf8();
        const auto parsed = parseScenario(text, u"example"_qs);
        const auto* error = std::get_if<ScenarioError>(&parsed);
        EXPECT_EQ(error, nullptr) << qPrintable(error->text()) << " in\n" << text.constData();
    }
    EXPECT_GE(count, 12);
}

} // namespace
} // namespace spotwell::simulator
