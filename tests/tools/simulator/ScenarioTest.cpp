// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/Scenario.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace spotwell::simulator
{
namespace
{

Scenario parsed(const QByteArray& text, const Variables& given = {})
{
    auto result = parseScenario(text, u"dir/test.scenario"_qs, given);
    if (const auto* error = std::get_if<ScenarioError>(&result)) {
        ADD_FAILURE() << qPrintable(error->text());
        return {};
    }
    return std::get<Scenario>(result);
}

QString errorOf(const QByteArray& text)
{
    const auto result = parseScenario(text, u"test.scenario"_qs);
    const auto* error = std::get_if<ScenarioError>(&result);
    return error ? error->text() : QString{};
}

QByteArray sentIn(const Session& session, std::size_t index = 0)
{
    return std::get<Send>(session.at(index).what).bytes;
}

TEST(Scenario, isOneSessionWithoutBlocks)
{
    const Scenario scenario = parsed("# A title\n\nsend \"a\"\r\nwait 1\nclose");
    EXPECT_EQ(scenario.name, u"test"_qs);
    ASSERT_EQ(scenario.sessions.size(), 1U);
    ASSERT_EQ(scenario.sessions[0].size(), 3U);
    EXPECT_EQ(scenario.sessions[0][0].line, 3);
    EXPECT_EQ(scenario.sessions[0][2].line, 5);
    EXPECT_EQ(&scenario.session(1), &scenario.session(99));
}

TEST(Scenario, givesEachConnectionItsSession)
{
    const Scenario scenario = parsed("session\nsend \"1\"\nend\nsession\nsend \"2\"\nend\n");
    EXPECT_EQ(sentIn(scenario.session(1)), "1");
    EXPECT_EQ(sentIn(scenario.session(2)), "2");
    EXPECT_EQ(sentIn(scenario.session(3)), "2");
}

TEST(Scenario, givesLaterConnectionsWhatStandsUnderOtherwise)
{
    const Scenario scenario = parsed("session\nsend \"1\"\nend\notherwise\nsend \"2\"\nend\n");
    EXPECT_EQ(scenario.sessions.size(), 1U);
    EXPECT_EQ(sentIn(scenario.session(1)), "1");
    EXPECT_EQ(sentIn(scenario.session(2)), "2");
    EXPECT_EQ(sentIn(scenario.session(3)), "2");
}

TEST(Scenario, mayHaveASilentSession)
{
    EXPECT_TRUE(parsed("session\nend\n").sessions.at(0).empty());
}

TEST(Scenario, nestsRepetitions)
{
    const Scenario scenario =
        parsed("repeat 2\nrepeat forever\nsend \"a\"\nend\nsend \"b\"\nend\nsend \"c\"\n");
    const Session& session = scenario.sessions.at(0);
    ASSERT_EQ(session.size(), 2U);
    EXPECT_EQ(session[0].line, 1);
    const auto& outer = std::get<Repeat>(session[0].what);
    EXPECT_EQ(outer.times, 2);
    const auto& inner = std::get<Repeat>(outer.body.at(0).what);
    EXPECT_FALSE(inner.times.has_value());
    EXPECT_EQ(sentIn(inner.body), "a");
    EXPECT_EQ(sentIn(outer.body, 1), "b");
    EXPECT_EQ(sentIn(session, 1), "c");
}

TEST(Scenario, setsVariablesUnlessTheyAreGiven)
{
    const QByteArray text =
        "set call N0CALL\nset greeting \"Hello \"\nset both $greeting\nsend $both $call\n";
    EXPECT_EQ(sentIn(parsed(text).sessions[0]), "Hello N0CALL");
    EXPECT_EQ(sentIn(parsed(text, {{u"call"_qs, u"Ä1"_qs}}).sessions[0]), "Hello \xC3\x84"
                                                                          "1");
    EXPECT_EQ(parsed(text).variables, (QStringList{u"call"_qs, u"greeting"_qs, u"both"_qs}));
}

TEST(Scenario, saysWhatIsWrongAndWhere)
{
    const struct {
        QByteArray text;
        QString error;
    } cases[]{
        {"", u"test.scenario: the scenario says nothing"_qs},
        {"# nothing\nset a 1\n", u"test.scenario: the scenario says nothing"_qs},
        {"\n\nsned \"a\"\n", u"test.scenario:3: unknown command \"sned\""_qs},
        {"send \"a\"\nsend \"\xff\"\n", u"test.scenario:2: the line is not UTF-8"_qs},
        {"send \"a\nsend \"b\"\n", u"test.scenario:1: the text is not closed with a quotation mark"_qs},
        {"send \"a\"\nset x 1\n", u"test.scenario:2: \"set\" has to stand before everything else"_qs},
        {"session\nend\nset x 1\n", u"test.scenario:3: \"set\" has to stand before everything else"_qs},
        {"set x\n", u"test.scenario:1: \"set\" needs a name of small letters and a value"_qs},
        {"set X 1\n", u"test.scenario:1: \"set\" needs a name of small letters and a value"_qs},
        {"set \"x\" 1\n", u"test.scenario:1: \"set\" needs a name of small letters and a value"_qs},
        {"set x 1 2\n", u"test.scenario:1: \"set\" needs a name of small letters and a value"_qs},
        {"set x 1\nset x 2\n", u"test.scenario:2: the variable \"x\" is set already"_qs},
        {"wait 1\nsession\nend\n", u"test.scenario:2: statements stand in front of the first session"_qs},
        {"session\nsession\n", u"test.scenario:2: sessions cannot be nested"_qs},
        {"session\nend\nwait 1\n", u"test.scenario:3: the statement stands outside of the sessions"_qs},
        {"otherwise\nend\n", u"test.scenario:1: \"otherwise\" needs a session before it"_qs},
        {"session\nend\notherwise\nend\nsession\nend\n",
         u"test.scenario:5: nothing can follow \"otherwise\""_qs},
        {"session first\n", u"test.scenario:1: nothing more expected after \"session\""_qs},
        {"wait 1\nend\n", u"test.scenario:2: \"end\" without a beginning"_qs},
        {"end\n", u"test.scenario:1: \"end\" without a beginning"_qs},
        {"\nsession\nwait 1\n", u"test.scenario:2: \"end\" is missing"_qs},
        {"wait 1\nrepeat 2\nwait 1\n", u"test.scenario:2: \"end\" is missing"_qs},
        {"repeat 2\nend\nwait 1\n", u"test.scenario:1: there is nothing to repeat"_qs},
        {"close\nwait 1\n", u"test.scenario:2: nothing can follow \"close\" or \"reset\""_qs},
        {"reset\nclose\n", u"test.scenario:2: nothing can follow \"close\" or \"reset\""_qs},
        {"repeat 2\nclose\nend\n", u"test.scenario:2: a connection cannot be ended inside \"repeat\""_qs},
        {"repeat 2\nhalf-close\nend\n",
         u"test.scenario:2: a connection cannot be ended inside \"repeat\""_qs},
        {"half-close\nsend \"a\"\n", u"test.scenario:2: nothing can be sent after \"half-close\""_qs},
        {"half-close\nwait 1\nspots 1 at 1\n",
         u"test.scenario:3: nothing can be sent after \"half-close\""_qs},
        {QByteArray{"repeat 2\n"}.repeated(8), u"test.scenario:8: \"end\" is missing"_qs},
        {QByteArray{"repeat 2\n"}.repeated(9), u"test.scenario:9: \"repeat\" is nested more than 8 deep"_qs},
        {QByteArray{"wait 1\n"}.repeated(10'001), u"test.scenario:10001: more than 10000 statements"_qs},
        {QByteArray((1 << 20) + 1, '\n'), u"test.scenario: more than 1048576 bytes"_qs},
    };
    for (const auto& c : cases)
        EXPECT_EQ(errorOf(c.text), c.error) << c.text.left(100).constData();
}

TEST(Scenario, acceptsWhatStillFits)
{
    EXPECT_EQ(errorOf(QByteArray{"wait 1\n"}.repeated(10'000)), QString{});
    EXPECT_EQ(errorOf("wait 1" + QByteArray((1 << 20) - 6, '\n')), QString{});
    EXPECT_EQ(errorOf(QByteArray{"repeat 2\n"}.repeated(8) + "wait 1\n" + QByteArray{"end\n"}.repeated(8)),
              QString{});
    EXPECT_EQ(errorOf("half-close\nexpect \"a\"\nwait 1\nstay silent for 1\nexpect close\nclose\n"),
              QString{});
}

TEST(Scenario, neverCrashesOnNoise)
{
    const QByteArray words[]{"send ", "\"", "\\x",  "repeat 2\n", "end\n",  "session\n",
                             "$",     "5 ", "\xC3", "\n",         "expect "};
    unsigned state = 1;
    for (int round = 0; round < 2000; ++round) {
        QByteArray text;
        for (int i = 0; i < 12; ++i) {
            state = state * 1664525U + 1013904223U;
            text += words[(state >> 16) % std::size(words)];
        }
        parseScenario(text, u"noise"_qs);
    }
}

TEST(Scenario, readsFiles)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"tiny.scenario"_qs);
    QFile file{path};
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("send \"a\"\n");
    file.close();
    const auto read = readScenario(path);
    ASSERT_TRUE(std::holds_alternative<Scenario>(read));
    EXPECT_EQ(std::get<Scenario>(read).name, u"tiny"_qs);

    const auto missing = readScenario(folder.filePath(u"none.scenario"_qs));
    ASSERT_TRUE(std::holds_alternative<ScenarioError>(missing));
    EXPECT_TRUE(std::get<ScenarioError>(missing).text().startsWith(folder.filePath(u"none.scenario: "_qs)));
}

} // namespace
} // namespace spotwell::simulator
