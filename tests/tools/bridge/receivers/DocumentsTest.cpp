// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/bridge/receivers/LoggerTest.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
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

/// The anchors that a page's headings have.
QStringList anchors(const QString& page)
{
    static const QRegularExpression unwanted(u"[^\\w\\- ]"_s);
    QStringList result;
    for (QString& heading : captures(page, u"(?m)^#+ (.*)$"_s))
        result << heading.toLower().remove(unwanted).replace(u' ', u'-');
    return result;
}

/// What the pages say of the bridge's command line, and where their links lead.
class DocumentsTest : public LoggerTest
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

TEST_F(DocumentsTest, LinkToWhatThereIs)
{
    for (const QString& page : pages()) {
        for (const QString& link : captures(contents(page), u"\\]\\(([^)]+)\\)"_s)) {
            if (link.contains(u"://"_s))
                continue;
            const QString path = link.section(u'#', 0, 0);
            const QString target = path.isEmpty() ? page : QFileInfo(page).dir().filePath(path);
            EXPECT_TRUE(QFileInfo::exists(target)) << page.toStdString() << ": " << link.toStdString();
            const QString anchor = link.section(u'#', 1);
            EXPECT_TRUE(anchor.isEmpty() || anchors(contents(target)).contains(anchor))
                << page.toStdString() << ": " << link.toStdString();
        }
    }
}

} // namespace

} // namespace spotwell
