// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/bridge/receivers/LoggerFixture.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

namespace spotwell
{

namespace
{

using namespace Qt::Literals::StringLiterals;

const QString bridgeAddress = u"127.0.0.1:7373"_s;

QString contents(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return QString::fromUtf8(file.readAll());
}

QStringList captures(const QString& text, const QString& pattern)
{
    QStringList result;
    for (const QRegularExpressionMatch& match : QRegularExpression(pattern).globalMatch(text))
        result << match.captured(1);
    return result;
}

/// What the pages say of the bridge's command line.
class DocumentsTest : public LoggerFixture
{
protected:
    static QStringList pages()
    {
        const QDir root(QStringLiteral(SOURCES));
        QStringList result{root.filePath(u"README.md"_s)};
        const QDir documents(root.filePath(u"docs"_s));
        for (const QString& name : documents.entryList({u"*.md"_s}, QDir::Files))
            result << documents.filePath(name);
        return result;
    }
};

TEST_F(DocumentsTest, NameOptionsThatTheBridgeHas)
{
    const QString help = QString::fromStdString(run(u"spotwell-bridge --help"_s));
    int named = 0;
    for (const QString& page : pages()) {
        const QString arguments = captures(contents(page), u"spotwell-bridge([ \\[][^`\\n#]*)"_s).join(u'\n');
        for (const QString& option : captures(arguments, u"(--[a-z0-9][a-z0-9-]*)"_s)) {
            EXPECT_TRUE(help.contains(QRegularExpression(u"\\s%1\\s"_s.arg(option))))
                << page.toStdString() << ": " << option.toStdString();
            ++named;
        }
    }
    EXPECT_GE(named, 10);
    EXPECT_TRUE(help.contains(bridgeAddress));
    EXPECT_TRUE(contents(QStringLiteral(SOURCES "/docs/loggers.md")).contains(bridgeAddress));
}

} // namespace

} // namespace spotwell
