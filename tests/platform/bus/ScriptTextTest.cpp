// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/ScriptText.h"

#include <gtest/gtest.h>

namespace spotwell
{

namespace
{

using namespace Qt::Literals::StringLiterals;

TEST(ScriptText, ReadsTheShape)
{
    const struct {
        QString source;
        QString application;
        QString command;
        QString text;
    } table[] = {
        {u"Tell application \"Logwright\"\nprocessSpot \"DX de N0CALL:  7074.5  X1X\"\nend tell\n"_s,
         u"Logwright"_s, u"processSpot"_s, u"DX de N0CALL:  7074.5  X1X"_s},
        {u"TELL APPLICATION \"Logwright\"\nprocessSpot \"x\"\nEnd Tell"_s, u"Logwright"_s, u"processSpot"_s,
         u"x"_s},
        {u" tell\t application \"My Log 2\" \n\tprocess_2\"x\"\t\n  end   tell \n \n\n"_s, u"My Log 2"_s,
         u"process_2"_s, u"x"_s},
        {u"tell application \"L\"\nprocessSpot \"\"\nend tell\n"_s, u"L"_s, u"processSpot"_s, u""_s},
        {u"tell application \"L\"\nprocessSpot \" x \"\nend tell\n"_s, u"L"_s, u"processSpot"_s, u" x "_s},
        {u"tell application \"L\"\nprocessSpot \"it's %@ end tell\"\nend tell\n"_s, u"L"_s, u"processSpot"_s,
         u"it's %@ end tell"_s},
        {u"tell application \"L\"\nprocessSpot \""_s + QChar(u'\0') + u"\"\nend tell\n"_s, u"L"_s,
         u"processSpot"_s, QString(QChar(u'\0'))},
    };
    for (const auto& row : table) {
        const auto read = readScriptText(row.source);
        ASSERT_TRUE(std::holds_alternative<ScriptText>(read)) << row.source.toStdString();
        EXPECT_EQ(std::get<ScriptText>(read).application, row.application);
        EXPECT_EQ(std::get<ScriptText>(read).command, row.command);
        EXPECT_EQ(std::get<ScriptText>(read).text, row.text);
    }
}

TEST(ScriptText, SaysWhatItExpectedInstead)
{
    const QString tell = u"Expected “tell application \"NAME\"”."_s;
    const QString command = u"Expected a command and one text in double quotes."_s;
    const QString endTell = u"Expected “end tell”."_s;
    const QString end = u"Expected the end of the script after “end tell”."_s;
    const struct {
        QString source;
        QString message;
    } table[] = {
        {u""_s, tell},
        {u"\ntell application \"L\"\nprocessSpot \"x\"\nend tell\n"_s, tell},
        {u"tell \"L\"\nprocessSpot \"x\"\nend tell\n"_s, tell},
        {u"tellapplication \"L\"\nprocessSpot \"x\"\nend tell\n"_s, tell},
        {u"tell application L\nprocessSpot \"x\"\nend tell\n"_s, tell},
        {u"tell application \"L\nprocessSpot \"x\"\nend tell\n"_s, tell},
        {u"tell application \"\"\nprocessSpot \"x\"\nend tell\n"_s, tell},
        {u"tell application \"L\" of \"M\"\nprocessSpot \"x\"\nend tell\n"_s, tell},
        {u"tell application \"L\\\"\nprocessSpot \"x\"\nend tell\n"_s, tell},
        {u"tell application \"L\""_s, command},
        {u"tell application \"L\"\nend tell\n"_s, command},
        {u"tell application \"L\"\n\"x\"\nend tell\n"_s, command},
        {u"tell application \"L\"\nprocessSpot\nend tell\n"_s, command},
        {u"tell application \"L\"\nprocessSpot x\nend tell\n"_s, command},
        {u"tell application \"L\"\nprocess spot \"x\"\nend tell\n"_s, command},
        {u"tell application \"L\"\nprocess.spot \"x\"\nend tell\n"_s, command},
        {u"tell application \"L\"\n2spot \"x\"\nend tell\n"_s, command},
        {u"tell application \"L\"\nspöt \"x\"\nend tell\n"_s, command},
        {u"tell application \"L\"\n"_s + QString(256, u'p') + u" \"x\"\nend tell\n"_s, command},
        {u"tell application \"L\"\nprocessSpot \"x\" \"y\"\nend tell\n"_s, command},
        {u"tell application \"L\"\nprocessSpot \"a\"b\"\nend tell\n"_s, command},
        {u"tell application \"L\"\nprocessSpot \"a\\b\"\nend tell\n"_s, command},
        {u"tell application \"L\"\nprocessSpot \"a\nb\"\nend tell\n"_s, command},
        {u"tell application \"L\"\nprocessSpot \"\nend tell\n"_s, command},
        {u"tell application \"L\"\nprocessSpot \"x\"\n"_s, endTell},
        {u"tell application \"L\"\nprocessSpot \"x\"\nprocessSpot \"y\"\nend tell\n"_s, endTell},
        {u"tell application \"L\"\nprocessSpot \"x\"\nendtell\n"_s, endTell},
        {u"tell application \"L\"\nprocessSpot \"x\"\nend tell now\n"_s, endTell},
        {u"tell application \"L\"\nprocessSpot \"x\"\nend tell\nquit\n"_s, end},
    };
    for (const auto& row : table) {
        const auto read = readScriptText(row.source);
        ASSERT_TRUE(std::holds_alternative<ScriptTextError>(read)) << row.source.toStdString();
        EXPECT_EQ(std::get<ScriptTextError>(read).message, row.message) << row.source.toStdString();
    }
}

} // namespace

} // namespace spotwell
