// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/WebAnswerParser.h"

#include "tools/spotwell-simulator/Scenario.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace spotwell::simulator
{
namespace
{

Words splitAnswerLine(const QString& line)
{
    return splitWords(line, {{u"n"_qs, u"7"_qs}, {u"t"_qs, u"text"_qs}});
}

/// The answer that these lines make, on lines 1, 2, ...
WebAnswer answerOf(const QStringList& lines)
{
    WebAnswer answer;
    int number = 0;
    for (const QString& line : lines) {
        const QString error = addToAnswer(answer, splitAnswerLine(line).words, ++number, u"."_qs);
        EXPECT_EQ(error, QString{}) << qPrintable(line);
    }
    EXPECT_EQ(faultOf(answer), QString{});
    return answer;
}

QString faultIn(const QStringList& lines)
{
    WebAnswer answer;
    for (const QString& line : lines) {
        const QString error = addToAnswer(answer, splitAnswerLine(line).words, 1, u"/nowhere"_qs);
        if (!error.isNull())
            return error;
    }
    return faultOf(answer);
}

TEST(WebAnswerParser, readsChecks)
{
    const WebAnswer answer =
        answerOf({u"expect request \"GET /a\""_qs, u"expect header User-Agent"_qs,
                  u"expect header Accept \"text/\" $t"_qs, u"expect no header Range"_qs});
    ASSERT_EQ(answer.checks.size(), 4U);
    EXPECT_EQ(answer.checks[0].line, 1);
    EXPECT_EQ(std::get<ExpectRequest>(answer.checks[0].what).line, "GET /a");
    EXPECT_EQ(answer.checks[3].line, 4);
    const auto& present = std::get<ExpectHeader>(answer.checks[1].what);
    EXPECT_EQ(present.name, "User-Agent");
    EXPECT_TRUE(present.present && !present.value);
    EXPECT_EQ(std::get<ExpectHeader>(answer.checks[2].what).value, QByteArray{"text/text"});
    EXPECT_FALSE(std::get<ExpectHeader>(answer.checks[3].what).present);
    EXPECT_TRUE(answer.saysSomething());
    EXPECT_FALSE(answer.hasBody());
}

TEST(WebAnswerParser, readsHeadAndBody)
{
    const WebAnswer answer = answerOf({u"wait 1.5"_qs, u"status 404 \"Gone away\""_qs, u"header X-A \"b\""_qs,
                                       u"body latin1 \"é\" $t"_qs, u"pota $n"_qs, u"dxsummit 50 new 0"_qs,
                                       u"wsprnet 0"_qs, u"filler 10000000000"_qs});
    EXPECT_EQ(answer.status, 404);
    EXPECT_EQ(answer.reason, "Gone away");
    EXPECT_EQ(answer.headers, std::vector<QByteArray>{"X-A: b"});
    ASSERT_EQ(answer.parts.size(), 6U);
    EXPECT_EQ(std::get<WebPause>(answer.parts[0]).duration, Seconds{1.5});
    EXPECT_EQ(std::get<QByteArray>(answer.parts[1]), "\xE9text");
    const auto& pota = std::get<WebList>(answer.parts[2]);
    EXPECT_EQ(pota.feed, WebFeed::pota);
    EXPECT_EQ(pota.rows, 7);
    EXPECT_EQ(pota.fresh, 1);
    const auto& dxsummit = std::get<WebList>(answer.parts[3]);
    EXPECT_EQ(dxsummit.feed, WebFeed::dxsummit);
    EXPECT_EQ(dxsummit.fresh, 0);
    EXPECT_EQ(std::get<WebList>(answer.parts[4]).feed, WebFeed::wsprnet);
    EXPECT_EQ(std::get<WebList>(answer.parts[4]).fresh, 0);
    EXPECT_EQ(std::get<WebFiller>(answer.parts[5]).bytes, 10'000'000'000);
    EXPECT_EQ(std::get<WebList>(answerOf({u"pota 10000"_qs}).parts[0]).fresh, 1000);
    EXPECT_EQ(answerOf({u"redirect \"/a\""_qs}).status, 302);
    EXPECT_EQ(answerOf({u"redirect \"/a\""_qs}).headers, std::vector<QByteArray>{"Location: /a"});
}

TEST(WebAnswerParser, readsTheWayItIsSent)
{
    const WebAnswer plain = answerOf({u"body \"a\""_qs});
    EXPECT_FALSE(plain.gzip || plain.chunk || plain.rate || plain.missing != 0);
    EXPECT_EQ(plain.end, WebAnswer::End::keepAlive);
    const WebAnswer answer =
        answerOf({u"gzip"_qs, u"chunked 65536"_qs, u"drip 0.5"_qs, u"truncate 3"_qs, u"body \"a\""_qs});
    EXPECT_TRUE(answer.gzip);
    EXPECT_EQ(answer.chunk, 65'536);
    EXPECT_EQ(answer.rate, 0.5);
    EXPECT_EQ(answer.missing, 3);
    EXPECT_EQ(answerOf({u"chunked"_qs}).chunk, 4096);
    EXPECT_EQ(answerOf({u"close"_qs}).end, WebAnswer::End::close);
    EXPECT_EQ(answerOf({u"reset"_qs}).end, WebAnswer::End::reset);
    EXPECT_FALSE(answerOf({u"stay silent"_qs}).silence);
    EXPECT_EQ(answerOf({u"stay silent for 3"_qs}).silence, Seconds{3});
    EXPECT_FALSE(answerOf({u"wait 1"_qs, u"stay silent"_qs}).saysSomething());
    EXPECT_TRUE(answerOf({u"status 200"_qs, u"reset"_qs}).saysSomething());
    EXPECT_TRUE(answerOf({u"body \"a\""_qs, u"reset"_qs}).saysSomething());
    EXPECT_TRUE(answerOf({u"header A \"a\""_qs, u"close"_qs}).saysSomething());
}

TEST(WebAnswerParser, readsFilesOfTheScenariosFolder)
{
    const QTemporaryDir folder;
    QFile file{folder.filePath(u"answer.json"_qs)};
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[1]\n");
    file.close();
    WebAnswer answer;
    EXPECT_EQ(addToAnswer(answer, splitAnswerLine(u"body file \"answer.json\""_qs).words, 1, folder.path()),
              QString{});
    EXPECT_EQ(std::get<QByteArray>(answer.parts.at(0)), "[1]\n");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.resize((1 << 26) + 1);
    EXPECT_EQ(addToAnswer(answer, splitAnswerLine(u"body file \"answer.json\""_qs).words, 1, folder.path()),
              file.fileName() + u": more than 67108864 bytes"_qs);
    file.resize(1 << 26);
    EXPECT_EQ(addToAnswer(answer, splitAnswerLine(u"body file \"answer.json\""_qs).words, 1, folder.path()),
              QString{});
}

TEST(WebAnswerParser, saysWhatIsWrong)
{
    const QString afterEnd = u"nothing can follow \"close\", \"reset\" or \"stay silent\""_qs;
    const struct {
        QStringList lines;
        QString error;
    } cases[]{
        {{u"send \"a\""_qs}, u"unknown command \"send\""_qs},
        {{u"repeat 2"_qs}, u"unknown command \"repeat\""_qs},
        {{u"\"a\""_qs}, u"a command expected instead of \"a\""_qs},
        {{u"expect \"a\""_qs}, u"\"header\" expected instead of \"a\""_qs},
        {{u"expect no request"_qs}, u"\"header\" expected instead of \"request\""_qs},
        {{u"expect request"_qs}, u"a text expected at the end of the line"_qs},
        {{u"expect request \"a\\n\""_qs}, u"the text has to be a single line"_qs},
        {{u"expect header"_qs}, u"a header's name expected at the end of the line"_qs},
        {{u"expect header \"A\""_qs}, u"a header's name expected instead of \"A\""_qs},
        {{u"expect no header A \"b\""_qs}, u"nothing more expected instead of \"b\""_qs},
        {{u"status"_qs}, u"a status expected, a whole number from 200 to 599 at the end of the line"_qs},
        {{u"status 199"_qs}, u"a status expected, a whole number from 200 to 599 instead of \"199\""_qs},
        {{u"status 600"_qs}, u"a status expected, a whole number from 200 to 599 instead of \"600\""_qs},
        {{u"status 200"_qs, u"status 200"_qs}, u"\"status\" was said already"_qs},
        {{u"status 200"_qs, u"redirect \"/\""_qs}, u"\"status\" was said already"_qs},
        {{u"status 200 \"a\\r\""_qs}, u"the text has to be a single line"_qs},
        {{u"header A \"a\\0\""_qs}, u"the text has to be a single line"_qs},
        {{u"header A"_qs}, u"a text expected at the end of the line"_qs},
        {{u"header content-Length \"1\""_qs}, u"the header \"content-Length\" comes by itself"_qs},
        {{u"header Connection \"close\""_qs}, u"the header \"Connection\" comes by itself"_qs},
        {{u"body file \"none\""_qs}, u"/nowhere/none: No such file or directory"_qs},
        {{u"pota"_qs}, u"how many rows expected, a whole number from 0 to 10000 at the end of the line"_qs},
        {{u"pota 10001"_qs},
         u"how many rows expected, a whole number from 0 to 10000 instead of \"10001\""_qs},
        {{u"wsprnet 5 new 6"_qs},
         u"how many new ones expected, a whole number from 0 to 5 instead of \"6\""_qs},
        {{u"dxsummit 5 old 5"_qs}, u"nothing more expected instead of \"old\""_qs},
        {{u"filler 0"_qs},
         u"how many bytes expected, a whole number from 1 to 10000000000 instead of \"0\""_qs},
        {{u"wait 86401"_qs}, u"seconds expected, a number from 0 to 86400 instead of \"86401\""_qs},
        {{u"gzip"_qs, u"gzip"_qs}, u"\"gzip\" was said already"_qs},
        {{u"chunked"_qs, u"chunked"_qs}, u"\"chunked\" was said already"_qs},
        {{u"chunked 65537"_qs}, u"bytes expected, a whole number from 1 to 65536 instead of \"65537\""_qs},
        {{u"drip 1"_qs, u"drip 1"_qs}, u"\"drip\" was said already"_qs},
        {{u"drip 0"_qs}, u"bytes a second expected, a number from 0.01 to 1000000000 instead of \"0\""_qs},
        {{u"truncate 1"_qs, u"truncate 1"_qs}, u"\"truncate\" was said already"_qs},
        {{u"stay calm"_qs}, u"\"silent\" expected instead of \"calm\""_qs},
        {{u"close"_qs, u"body \"a\""_qs}, afterEnd},
        {{u"reset"_qs, u"wait 1"_qs}, afterEnd},
        {{u"stay silent"_qs, u"close"_qs}, afterEnd},
        {{u"status 304"_qs, u"body \"a\""_qs}, u"an answer with the status 304 has no body"_qs},
        {{u"status 204"_qs, u"pota 1"_qs}, u"an answer with the status 204 has no body"_qs},
        {{u"gzip"_qs, u"body \"a\""_qs, u"wait 1"_qs, u"body \"a\""_qs},
         u"nothing can be waited for inside of a gzipped body"_qs},
        {{u"gzip"_qs, u"filler 67108864"_qs, u"filler 1"_qs},
         u"\"gzip\" takes 67108864 bytes of filler at most"_qs},
        {{u"gzip"_qs, u"filler 67108864"_qs}, {}},
        {{u"gzip"_qs, u"wait 1"_qs, u"body \"a\""_qs, u"wait 1"_qs}, {}},
        {{u"body \"a\""_qs, u"wait 1"_qs, u"body \"a\""_qs}, {}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(faultIn(c.lines), c.error) << qPrintable(c.lines.join(u'\n'));
}

QString serviceErrorOf(const QByteArray& text)
{
    const auto result = parseScenario(text, u"test.scenario"_qs);
    const auto* error = std::get_if<ScenarioError>(&result);
    return error ? error->text() : QString{};
}

TEST(ServiceScenario, hasAnswers)
{
    const auto result =
        parseScenario("# A title\nset s https\nservice $s\nset a \"x\"\nanswer\nbody $a\nend\n"
                      "answer\nend\notherwise\nstatus 500\nend\n",
                      u"test.scenario"_qs);
    const auto& scenario = std::get<Scenario>(result);
    EXPECT_EQ(scenario.kind, Scenario::Kind::https);
    EXPECT_TRUE(scenario.isService());
    EXPECT_TRUE(scenario.sessions.empty());
    ASSERT_EQ(scenario.answers.size(), 2U);
    EXPECT_EQ(&scenario.answer(1), &scenario.answers[0]);
    EXPECT_EQ(&scenario.answer(2), &scenario.answers[1]);
    EXPECT_EQ(scenario.answer(3).status, 500);
    EXPECT_EQ(scenario.answer(4'000'000'000).status, 500);
    EXPECT_EQ(scenario.answer(1).line, 5);
    EXPECT_EQ(scenario.variables, (QStringList{u"s"_qs, u"a"_qs}));
}

TEST(ServiceScenario, saysWhatIsWrongAndWhere)
{
    const struct {
        QByteArray text;
        QString error;
    } cases[]{
        {"service http\n", u"test.scenario: the scenario says nothing"_qs},
        {"service\n", u"test.scenario:1: \"service\" needs \"http\" or \"https\""_qs},
        {"service ftp\n", u"test.scenario:1: \"service\" needs \"http\" or \"https\""_qs},
        {"service http 1\n", u"test.scenario:1: \"service\" needs \"http\" or \"https\""_qs},
        {"service http\nservice http\n", u"test.scenario:2: \"service\" was said already"_qs},
        {"wait 1\nservice http\n", u"test.scenario:2: \"service\" has to stand before everything else"_qs},
        {"session\nend\nservice http\n",
         u"test.scenario:3: \"service\" has to stand before everything else"_qs},
        {"service http\nanswer\nend\nset a 1\n",
         u"test.scenario:4: \"set\" has to stand before everything else"_qs},
        {"service http\nsession\nend\n", u"test.scenario:2: unknown command \"session\""_qs},
        {"answer\nend\n", u"test.scenario:1: unknown command \"answer\""_qs},
        {"service http\nwait 1\nanswer\nend\n",
         u"test.scenario:3: statements stand in front of the first answer"_qs},
        {"service http\nanswer\nanswer\n", u"test.scenario:3: answers cannot be nested"_qs},
        {"service http\nanswer\nend\nwait 1\n",
         u"test.scenario:4: the statement stands outside of the answers"_qs},
        {"service http\notherwise\nend\n", u"test.scenario:2: \"otherwise\" needs an answer before it"_qs},
        {"service http\nanswer\nend\notherwise\nend\nanswer\nend\n",
         u"test.scenario:6: nothing can follow \"otherwise\""_qs},
        {"service http\nanswer\n", u"test.scenario:2: \"end\" is missing"_qs},
        {"service http\nwait 1\nend\n", u"test.scenario:3: \"end\" without a beginning"_qs},
        {"service http\nanswer now\nend\n", u"test.scenario:2: nothing more expected after \"answer\""_qs},
        {"service http\nbody 5\n",
         u"test.scenario:2: a text or a character set expected instead of \"5\"; the character sets are "
         u"utf-8, latin1, latin2, windows-1250, windows-1251, windows-1252, koi8-r"_qs},
        {"service http\n\nstatus 304\nbody \"a\"\n",
         u"test.scenario:3: an answer with the status 304 has no body"_qs},
        {"service http\nanswer\nstatus 304\nbody \"a\"\nend\n",
         u"test.scenario:2: an answer with the status 304 has no body"_qs},
        {"service http\n" + QByteArray{"wait 1\n"}.repeated(10'001),
         u"test.scenario:10002: more than 10000 statements"_qs},
    };
    for (const auto& c : cases)
        EXPECT_EQ(serviceErrorOf(c.text), c.error) << c.text.left(100).constData();
    EXPECT_EQ(serviceErrorOf("service http\n" + QByteArray{"wait 1\n"}.repeated(10'000)), QString{});
}

} // namespace
} // namespace spotwell::simulator
