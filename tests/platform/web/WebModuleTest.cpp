// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/web/WebModule.h"

#include "tests/support/web/UrlTransfers.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace spotwell
{

namespace
{

using namespace Qt::StringLiterals;

QString programDirectory()
{
    return QFile::symLinkTarget(u"/proc/self/exe"_s).section(u'/', 0, -2);
}

QString errorOf(const QString& path)
{
    QString error;
    EXPECT_EQ(makeUrlSession(path, {}, u"spotwell/1.2.3"_s, error), nullptr);
    return error;
}

TEST(WebModule, MakesASessionThatGetsAnswers)
{
    LoopbackHttpServer server(answering("200 OK", "body"));
    QString error;
    Results results;
    const auto session =
        makeUrlSession(webModulePath(programDirectory()), patient(), u"spotwell/1.2.3"_s, error);
    ASSERT_TRUE(session) << error.toStdString();
    session->dataTask(server.url(), results.handler());
    expectAnswer(results.wait(1).back(), 200, "body");
    EXPECT_NE(server.heads().front().find("\r\nUser-Agent: spotwell/1.2.3\r\n"), std::string::npos);
}

TEST(WebModule, IsOneForEachVersion)
{
    EXPECT_TRUE(webModulePath(u"/opt/bin"_s).startsWith(u"/opt/bin/../lib"_s));
    EXPECT_TRUE(webModulePath(u"/opt/bin"_s)
                    .contains(QRegularExpression(u"/spotwell/web-\\d+\\.\\d+\\.\\d+\\.so$"_s)));
}

TEST(WebModule, SaysWhyItCannotBeLoaded)
{
    EXPECT_EQ(
        errorOf(u"/nonexistent/web.so"_s),
        u"The web module cannot be loaded: /nonexistent/web.so: cannot open shared object file: No such "
        "file or directory"_s);

    const QTemporaryDir directory;
    const QString path = directory.filePath(u"web.so"_s);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("this is no module, nor anything else that could be loaded into a program, however long");
    file.close();
    EXPECT_EQ(errorOf(path), u"The web module cannot be loaded: "_s + path + u": invalid ELF header"_s);

    EXPECT_TRUE(errorOf(u"libc.so.6"_s).contains(u"undefined symbol: spotwellMakeUrlSession"_s));
}

} // namespace

} // namespace spotwell
