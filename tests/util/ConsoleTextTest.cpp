// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "util/ConsoleText.h"

#include <QStringList>
#include <gtest/gtest.h>

#include <random>

namespace spotwell
{
namespace
{

QString filled(int length, char16_t c = u'x')
{
    return QString(length, QChar(c));
}

/// The rule as it is said, a character at a time: the yardstick for the real one.
int trimPlainly(QString& text, int maximum)
{
    int removed = 0;
    while (text.size() > maximum && text.contains(u'\n')) {
        const auto count = text.indexOf(u'\n') + 1;
        text.remove(0, count);
        removed += static_cast<int>(count);
    }
    return removed;
}

TEST(ConsoleText, KnowsItsLimits)
{
    EXPECT_EQ(ConsoleText::trimmingThreshold, 19457);
    EXPECT_EQ(ConsoleText::trimmingTarget, 19456);
    EXPECT_EQ(ConsoleText::scrollThreshold, 2);
}

TEST(ConsoleText, PutsALineFeedInFrontOfEachEntry)
{
    ConsoleText console;
    EXPECT_EQ(console.text(), QString());
    EXPECT_EQ(console.length(), 0);
    console.append(QStringLiteral("a"));
    EXPECT_EQ(console.text(), QStringLiteral("\na"));
    EXPECT_EQ(console.length(), 2);
    console.append(QStringLiteral("second"));
    EXPECT_EQ(console.text(), QStringLiteral("\na\nsecond"));
}

TEST(ConsoleText, AnEmptyEntryChangesNothing)
{
    ConsoleText console;
    console.append(QString());
    console.append(QStringLiteral(""));
    EXPECT_EQ(console.length(), 0);
    console.append(QStringLiteral("a"));
    static_cast<void>(console.takeChange());
    console.append(QString());
    EXPECT_EQ(console.text(), QStringLiteral("\na"));
    EXPECT_TRUE(console.takeChange().appended.isEmpty());
}

TEST(ConsoleText, KeepsEveryCharacterAsItCame)
{
    ConsoleText console;
    const QString odd = QString(QChar(0)) + QStringLiteral("\r\t\u2028\u2029\uFDD0\uFFFC\u202E") +
                        QChar(0xD800) + QStringLiteral("\U0001F4FB");
    console.append(odd);
    EXPECT_EQ(console.text(), u'\n' + odd);
}

TEST(ConsoleText, CountsCodeUnits)
{
    ConsoleText console;
    console.append(QStringLiteral("\U0001F4FB"));
    EXPECT_EQ(console.length(), 3);
}

TEST(ConsoleText, TrimsFrom19457OnOnly)
{
    // Stored: LF, 9 characters, LF, the rest.
    struct Case {
        int stored;
        int kept;
    };
    for (const Case c : {Case{19455, 19455}, Case{19456, 19456},
                         // The LF in front alone is enough ...
                         Case{19457, 19456},
                         // ... and here the oldest line goes, too.
                         Case{19458, 19458 - 1 - 10}}) {
        ConsoleText console;
        console.append(filled(9, u'a'));
        console.append(filled(c.stored - 10 - 1, u'b'));
        EXPECT_EQ(console.length(), c.kept) << c.stored;
    }
}

TEST(ConsoleText, AOneCharacterEntryOnAFullConsoleCutsTheLineFeedAndThenWholeLines)
{
    ConsoleText console;
    console.append(QStringLiteral("oldest"));
    console.append(QStringLiteral("second"));
    console.append(filled(19456 - 7 - 7 - 1));
    ASSERT_EQ(console.length(), 19456);
    console.append(QStringLiteral("z"));
    EXPECT_EQ(console.length(), 19458 - 1 - 7);
    EXPECT_TRUE(console.text().startsWith(QStringLiteral("second\nxxx")));
    EXPECT_TRUE(console.text().endsWith(QStringLiteral("x\nz")));
}

TEST(ConsoleText, ALineThatIsTooLongStaysUntilTheNextEntry)
{
    ConsoleText console;
    console.append(QStringLiteral("before"));
    console.append(filled(30000));
    EXPECT_EQ(console.text(), filled(30000));
    console.append(QStringLiteral("after"));
    EXPECT_EQ(console.text(), QStringLiteral("after"));
}

TEST(ConsoleText, AnEntryOfLineFeedsIsCutLikeLines)
{
    ConsoleText console;
    console.append(filled(20000) + QStringLiteral("\nB"));
    EXPECT_EQ(console.text(), QStringLiteral("B"));
    ConsoleText feeds;
    feeds.append(filled(20000, u'\n'));
    EXPECT_EQ(feeds.text(), filled(19456, u'\n'));
}

TEST(ConsoleText, RemoveStartLinesUntilCutsWholeLinesAndCountsThem)
{
    struct Case {
        int maximum;
        int removed;
        QString left;
    };
    const Case cases[] = {
        {100, 0, QStringLiteral("\none\ntwo\nthree")},
        {14, 0, QStringLiteral("\none\ntwo\nthree")},
        {13, 1, QStringLiteral("one\ntwo\nthree")},
        {12, 5, QStringLiteral("two\nthree")},
        {9, 5, QStringLiteral("two\nthree")},
        {8, 9, QStringLiteral("three")},
        {5, 9, QStringLiteral("three")},
        {4, 9, QStringLiteral("three")},
        {0, 9, QStringLiteral("three")},
        {-1, 9, QStringLiteral("three")},
    };
    for (const Case& c : cases) {
        ConsoleText console;
        for (const QString& line : {QStringLiteral("one"), QStringLiteral("two"), QStringLiteral("three")})
            console.append(line);
        EXPECT_EQ(console.removeStartLinesUntil(c.maximum), c.removed) << c.maximum;
        EXPECT_EQ(console.text(), c.left) << c.maximum;
    }
}

TEST(ConsoleText, RemoveStartLinesUntilLeavesATextWithoutLineFeed)
{
    ConsoleText console;
    EXPECT_EQ(console.removeStartLinesUntil(0), 0);
    EXPECT_EQ(console.removeStartLinesUntil(-1), 0);
    console.append(QStringLiteral("abc"));
    EXPECT_EQ(console.removeStartLinesUntil(3), 1);
    EXPECT_EQ(console.removeStartLinesUntil(1), 0);
    EXPECT_EQ(console.text(), QStringLiteral("abc"));
}

TEST(ConsoleText, TellsAViewTheChangeSinceItLastAsked)
{
    ConsoleText console;
    console.append(QStringLiteral("one"));
    console.append(QStringLiteral("two"));
    ConsoleText::Change change = console.takeChange();
    EXPECT_EQ(change.dropped, 0);
    EXPECT_EQ(change.appended, QStringLiteral("\none\ntwo"));
    change = console.takeChange();
    EXPECT_EQ(change.dropped, 0);
    EXPECT_EQ(change.appended, QString());

    console.append(QStringLiteral("three"));
    EXPECT_EQ(console.removeStartLinesUntil(9), 5);
    change = console.takeChange();
    EXPECT_EQ(change.dropped, 5);
    EXPECT_EQ(change.appended, QStringLiteral("\nthree"));
}

TEST(ConsoleText, NeverTellsAViewOfWhatCameAndWentInBetween)
{
    ConsoleText console;
    console.append(QStringLiteral("seen"));
    static_cast<void>(console.takeChange());
    for (int i = 0; i < 1000; ++i)
        console.append(filled(100));
    const ConsoleText::Change change = console.takeChange();
    EXPECT_EQ(change.dropped, 5);
    EXPECT_EQ(change.appended, console.text());
}

TEST(ConsoleText, TrimmingOnceAfterManyEntriesLeavesWhatTrimmingAfterEachDoes)
{
    std::mt19937 random(20270203);
    for (int round = 0; round < 40; ++round) {
        ConsoleText console;
        QString atOnce;
        QString afterEach;
        QString shown;
        const int entries = std::uniform_int_distribution(1, 120)(random);
        for (int i = 0; i < entries; ++i) {
            // Mostly a line's length, now and then one that fills or overflows the console.
            const int length = random() % 25 == 0 ? std::uniform_int_distribution(1, 25000)(random)
                                                  : std::uniform_int_distribution(0, 600)(random);
            QString entry = filled(length, static_cast<char16_t>(u'a' + i % 26));
            if (length > 2 && random() % 5 == 0)
                entry[static_cast<int>(random() % static_cast<unsigned>(length))] = u'\n';
            console.append(entry);
            if (!entry.isEmpty()) {
                atOnce += u'\n' + entry;
                afterEach += u'\n' + entry;
                trimPlainly(afterEach, 19456);
            }
            ASSERT_EQ(console.text(), afterEach) << "round " << round << ", entry " << i;
            if (random() % 4 == 0) {
                const ConsoleText::Change change = console.takeChange();
                shown = shown.sliced(change.dropped) + change.appended;
                ASSERT_EQ(shown, afterEach);
            }
        }
        trimPlainly(atOnce, 19456);
        ASSERT_EQ(console.text(), atOnce) << "round " << round;
    }
}

TEST(ConsoleDisplayText, ShowsEachCharacterInItsPlace)
{
    struct Case {
        char32_t character;
        char32_t shown;
    };
    const Case cases[] = {
        {U'\n', U'\n'},   {U'\t', U'\t'},   {U' ', U' '},     {U'~', U'~'},     {0x00, 0x2400},
        {0x01, 0x2401},   {0x07, 0x2407},   {0x0B, 0x240B},   {U'\r', 0x240D},  {0x1B, 0x241B},
        {0x1F, 0x241F},   {0x7F, 0x2421},   {0x80, 0xFFFD},   {0x85, 0xFFFD},   {0x9F, 0xFFFD},
        {0xA0, 0xA0},     {0xE4, 0xE4},     {0x2027, 0x2027}, {0x2028, 0xFFFD}, {0x2029, 0xFFFD},
        {0x202A, 0xFFFD}, {0x202E, 0xFFFD}, {0x202F, 0x202F}, {0x2065, 0x2065}, {0x2066, 0xFFFD},
        {0x2069, 0xFFFD}, {0x206A, 0x206A}, {0xFDCF, 0xFDCF}, {0xFDD0, 0xFFFD}, {0xFDD1, 0xFFFD},
        {0xFDD2, 0xFDD2}, {0xFFFB, 0xFFFB}, {0xFFFC, 0xFFFD}, {0xFFFD, 0xFFFD}, {0x1F4FB, 0x1F4FB},
    };
    for (const Case& c : cases) {
        const QString text = u'a' + QString::fromUcs4(&c.character, 1) + u'b';
        const QString shown = u'a' + QString::fromUcs4(&c.shown, 1) + u'b';
        EXPECT_EQ(consoleDisplayText(text), shown) << std::hex << static_cast<unsigned>(c.character);
    }
}

TEST(ConsoleDisplayText, ReplacesHalvesOfPairsOnly)
{
    const QChar high(0xD83D);
    const QChar low(0xDCFB);
    const QChar lost(0xFFFD);
    EXPECT_EQ(consoleDisplayText(QString(high) + low), QString(high) + low);
    EXPECT_EQ(consoleDisplayText(QString(low) + high), QString(lost) + lost);
    EXPECT_EQ(consoleDisplayText(QString(high) + high + low), QString(lost) + high + low);
    EXPECT_EQ(consoleDisplayText(QString(high) + low + low), QString(high) + low + lost);
    EXPECT_EQ(consoleDisplayText(QString(u'a') + high), QString(u'a') + lost);
    EXPECT_EQ(consoleDisplayText(QString()), QString());
}

} // namespace
} // namespace spotwell
