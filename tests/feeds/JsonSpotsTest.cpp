// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "feeds/JsonSpots.h"

#include "tests/fakes/FakeServices.h"
#include "tests/feeds/SpotTexts.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

#include <limits>

namespace spotwell
{

namespace
{

using namespace Qt::Literals::StringLiterals;

/// The JSON text `json` as an object.
QJsonObject objectOf(const QByteArray& json)
{
    const std::optional<QJsonArray> spots = spotsIn(array({json}));
    EXPECT_TRUE(spots && spots->size() == 1 && spots->at(0).isObject()) << json.toStdString();
    return spots ? spots->at(0).toObject() : QJsonObject();
}

QJsonValue idIn(const QByteArray& json)
{
    return idOf(objectOf(json), "id"_L1, {"id"_L1, "a"_L1, "b"_L1});
}

} // namespace

TEST(JsonSpots, AreArrays)
{
    const std::vector<std::pair<QByteArray, qsizetype>> bodies = {
        {"[]", 0},
        {" \r\n\t[ ] \n", 0},
        {"[{}]", 1},
        {"[{\"a\":[1,2]},{}]", 2},
        {"[1,\"two\",null,true,[],{}]", 6},
        {"[\"\xc3\xa9\"]", 1},
        {QByteArray(500, '[') + QByteArray(500, ']'), 1},
        {"\xef\xbb\xbf[{}]", 1},
        {"[\"\t\r\n\x1f\",{}]", 2},
        {QByteArray("[\"\0\",{}]", 8), 2},
        {"[{\"a\":1,\"a\":2}]", 1},
        {"[" + QByteArray("{},").repeated(mostContainers - 2) + "{}]", mostContainers - 1},
        {"[" + QByteArray("1,").repeated(mostValues - 1) + "1]", mostValues},
    };
    for (const auto& [body, count] : bodies) {
        const std::optional<QJsonArray> spots = spotsIn(body);
        ASSERT_TRUE(spots) << body.toStdString();
        EXPECT_EQ(spots->size(), count) << body.toStdString();
    }
}

TEST(JsonSpots, AreNothingElse)
{
    const std::vector<QByteArray> bodies = {
        " ",
        "{}",
        "{\"spots\":[{}]}",
        "\"text\"",
        "7",
        "null",
        "true",
        "[",
        "[{\"a\":1},{\"a\"",
        "[{\"a\":1},{\"a\":2}",
        "[{},]",
        "[{}]x",
        "[{}][{}]",
        "[\"\\ud8\"]",
        "[\xff]",
        "[nan]",
        "[NaN]",
        "[Infinity]",
        "[1e400]",
        "[0123]",
        "[+1]",
        QByteArray("[{}]\0", 5),
        QByteArray(1100, '[') + QByteArray(1100, ']'),
        "[" + QByteArray("{},").repeated(mostContainers - 1) + "{}]",
        "[" + QByteArray("1,").repeated(mostValues) + "1]",
        "<!DOCTYPE html><html><body><h1>502 Bad Gateway</h1></body></html>",
        QByteArray("\0", 1),
        QByteArray(1000000, '['),
        QByteArray("[{}").repeated(1000000),
    };
    for (const QByteArray& body : bodies)
        EXPECT_FALSE(spotsIn(body)) << body.left(100).toStdString();
}

TEST(JsonSpots, LoseNothingByAByteThatIsNoText)
{
    const std::vector<std::pair<QByteArray, QString>> rows = {
        {"a\xe9z", u"a\ufffdz"_s},
        {"\xff", u"\ufffd"_s},
        {"\xed\xa0\x80", u"\ufffd\ufffd\ufffd"_s},
        {"cut \xe2\x82", u"cut \ufffd\ufffd"_s},
    };
    for (const auto& [bytes, text] : rows) {
        const auto spots = spotsIn(R"([{"a":"one"},{"a":")" + bytes + R"("},{"a":"three \u00e9"}])");
        ASSERT_TRUE(spots) << bytes.toStdString();
        ASSERT_EQ(spots->size(), 3);
        EXPECT_EQ(textOf(spots->at(0).toObject(), "a"_L1), u"one"_s);
        EXPECT_EQ(textOf(spots->at(1).toObject(), "a"_L1), text) << bytes.toHex().toStdString();
        EXPECT_EQ(textOf(spots->at(2).toObject(), "a"_L1), u"three \u00e9"_s);
    }
}

TEST(JsonSpots, AreKnownByTheirNumbers)
{
    struct Row {
        QByteArray one;
        QByteArray other;
        bool same;
    };
    const std::vector<Row> rows = {
        {"7", "7", true},
        {"7", "7.0", true},
        {"7", "70e-1", true},
        {"0", "-0.0", true},
        {"7", "8", false},
        {"7", "-7", false},
        {"7", "7.5", false},
        {"7.5", "7.5", true},
        {"7.5", "75E-1", true},
        {"9007199254740992", "9007199254740993", false},
        {"9007199254740993", "9007199254740993", true},
        {"9007199254740992", "9007199254740992.0", true},
        {"9223372036854775806", "9223372036854775807", false},
        {"-9223372036854775807", "-9223372036854775808", false},
        {"1e300", "1e300", true},
        {"1e300", "1e301", false},
    };
    for (const Row& row : rows) {
        // What else the spot says does not matter.
        QSet<QJsonValue> known;
        EXPECT_TRUE(remember(known, idIn(object({{"id", row.one}, {"a", "1"}}))));
        EXPECT_EQ(remember(known, idIn(object({{"id", row.other}, {"a", "2"}}))), !row.same)
            << row.one.toStdString() << ' ' << row.other.toStdString();
    }
}

TEST(JsonSpots, AreKnownByAllThatIsReadOfThemWithoutANumber)
{
    struct Row {
        QByteArray one;
        QByteArray other;
        bool same;
    };
    const std::vector<Row> rows = {
        {"{}", "{}", true},
        {"{}", R"({"id":null})", false},
        {R"({"id":null})", R"({"id":null})", true},
        {R"({"id":null,"a":1})", R"({"id":null,"a":2})", false},
        {R"({"a":1,"b":2})", R"({ "b" : 2.0, "a" : 1 })", true},
        {R"({"id":"7"})", R"({"id":"7"})", true},
        {R"({"id":"7"})", R"({"id":7})", false},
        {R"({"id":"7","a":1})", R"({"id":"7","a":2})", false},
        {R"({"id":true})", R"({"id":1})", false},
        {R"({"id":[7]})", R"({"id":7})", false},
        {R"({"id":{}})", R"({"id":[]})", false},
        {R"({"a":"\ud800"})", R"({"a":"\ud801"})", false},
        {R"({"a":"\ud800"})", R"({"a":"\ud800"})", true},
        {R"({"a":"\u0000"})", R"({"a":""})", false},
        {R"({"a":"x\u0000y"})", R"({"a":"x\u0000z"})", false},
        {R"({"id":"7","expire":1799})", R"({"id":"7","expire":1769})", true},
        {R"({"b":"b","expire":1})", R"({"b":"b"})", true},
        {R"({"a":")" + QByteArray(200, 'x') + R"(1"})", R"({"a":")" + QByteArray(200, 'x') + R"(2"})", false},
    };
    for (const Row& row : rows) {
        QSet<QJsonValue> known;
        EXPECT_TRUE(remember(known, idIn(row.one)));
        EXPECT_EQ(remember(known, idIn(row.other)), !row.same)
            << row.one.toStdString() << ' ' << row.other.toStdString();
    }
}

TEST(JsonSpots, AreKnownByLittle)
{
    const QJsonValue id = idIn(object({{"id", '"' + QByteArray(100000, 'x') + '"'}}));
    ASSERT_TRUE(id.isDouble());
    EXPECT_LT(id.toInteger(), 0) << "no service counts so";
    // The first 64 bits of SHA-256 of "{}", 44136fa355b3678a, with the sign's bit.
    EXPECT_EQ(static_cast<quint64>(idIn("{}").toInteger()), 0xc4136fa355b3678aU);
}

TEST(JsonSpots, HoldTexts)
{
    const std::vector<std::pair<QByteArray, std::optional<QString>>> rows = {
        {R"("text")", u"text"_s},
        {R"("")", u""_s},
        {R"(" ")", u" "_s},
        {"", std::nullopt},
        {"null", u""_s},
        {"7", u""_s},
        {"true", u""_s},
        {R"(["text"])", u""_s},
        {R"({"text":"text"})", u""_s},
        {"\"\xc3\xa9\xe2\x82\xac\xf0\x9f\x93\xbb\"", u"\u00e9\u20ac\U0001f4fb"_s},
        {R"("\u00e9\u20AC\ud83d\udcfb")", u"\u00e9\u20ac\U0001f4fb"_s},
        {R"("\"\\\/\b\f\n\r\t")", u"\"\\/\b\f\n\r\t"_s},
        {R"("a\u0000b")", u"a"_s + QChar(u'\0') + u'b'},
        {R"("a\ud800b")", u"a"_s + QChar(u'\xd800') + u'b'},
        {R"("a\udc00")", u"a"_s + QChar(u'\xdc00')},
        {R"("\udc00\ud800")", QString(QChar(u'\xdc00')) + QChar(u'\xd800')},
    };
    for (const auto& [json, text] : rows)
        EXPECT_EQ(textOf(objectOf(object({{"key", json}, {"other", "\"x\""}})), "key"_L1), text)
            << json.toStdString();
}

TEST(JsonSpots, ArePrinted)
{
    const std::vector<std::pair<QByteArray, QString>> rows = {
        {R"("text")", u"text"_s},
        {R"("")", u""_s},
        {R"("73")", u"73"_s},
        {"73", u"73"_s},
        {"73.0", u"73"_s},
        {"-5", u"-5"_s},
        {"0", u"0"_s},
        {"24.50", u"24.5"_s},
        {"0.1", u"0.1"_s},
        {"14074000.0", u"14074000"_s},
        {"9223372036854775807", u"9223372036854775807"_s},
        {"-9223372036854775808", u"-9223372036854775808"_s},
        {"9223372036854775808", u"9.223372036854776e+18"_s},
        {"1e300", u"1e+300"_s},
        {"true", u"1"_s},
        {"false", u"0"_s},
        {"null", u""_s},
        {"[73]", u""_s},
        {R"({"73":73})", u""_s},
    };
    for (const auto& [json, text] : rows)
        EXPECT_EQ(printedText(objectOf(object({{"key", json}})).value("key"_L1)), text) << json.toStdString();
}

TEST(JsonSpots, HoldNumbers)
{
    const std::vector<std::pair<QByteArray, std::optional<double>>> rows = {
        {"7", 7.0},
        {"-71.2", -71.2},
        {"0", 0.0},
        {"4.5e1", 45.0},
        {"9007199254740993", 9007199254740992.0},
        {"", std::nullopt},
        {"null", std::nullopt},
        {R"("7")", 7.0},
        {R"("-71.2")", -71.2},
        {R"(" +4.5e1 W")", 45.0},
        {R"("0")", 0.0},
        {R"("1e308")", 1e308},
        {R"("1e309")", std::nullopt},
        {R"("-1e309")", std::nullopt},
        {R"("")", std::nullopt},
        {R"("-")", std::nullopt},
        {R"("W 7")", std::nullopt},
        {R"("\u0000")", std::nullopt},
        {"true", std::nullopt},
        {"[7]", std::nullopt},
        {R"({"7":7})", std::nullopt},
    };
    for (const auto& [json, number] : rows)
        EXPECT_EQ(numberOf(objectOf(object({{"key", json}, {"other", "1"}})), "key"_L1), number)
            << json.toStdString();
}

TEST(JsonSpots, HoldFrequencies)
{
    const std::vector<std::pair<QByteArray, double>> rows = {
        {"14062", 14.062},
        {R"("14062")", 14.062},
        {"14062.5", 14.0625},
        {R"("14062.5")", 14.0625},
        {R"("14062.50 kHz")", 14.0625},
        {R"("14062kHz")", 14.062},
        {R"("14062,5")", 14.062},
        {R"("  7074.0")", 7.074},
        {R"("-7074")", -7.074},
        {R"("1.4e4")", 14.0},
        {"1.4e4", 14.0},
        {R"("0.5")", 0.0005},
        {R"("kHz 14062")", 0.0},
        {R"("")", 0.0},
        {R"("\u0000" )", 0.0},
        {R"("\ud800")", 0.0},
        {"0", 0.0},
        {"", 0.0},
        {"null", 0.0},
        {"true", 0.0},
        {"[14062]", 0.0},
        {R"({"kHz":14062})", 0.0},
        {R"("1e999")", std::numeric_limits<double>::infinity()},
    };
    for (const auto& [json, frequency] : rows)
        EXPECT_EQ(megahertzOf(objectOf(object({{"key", json}, {"other", "1"}})), "key"_L1), frequency)
            << json.toStdString();
}

TEST(JsonSpots, HoldTimes)
{
    const TimePoint time = std::chrono::sys_days{std::chrono::year{2024} / 3 / 1} + std::chrono::hours{23} +
                           std::chrono::minutes{59} + std::chrono::seconds{30};
    const std::vector<std::pair<QByteArray, std::optional<TimePoint>>> rows = {
        {R"("2024-03-01T23:59:30")", time},
        {R"("2024-03-01T23:59:30Z")", std::nullopt},
        {R"("2024-03-01T23:59:30.5")", std::nullopt},
        {R"("2024-03-01 23:59:30")", std::nullopt},
        {R"("2024-02-30T23:59:30")", std::nullopt},
        {R"("")", std::nullopt},
        {"", std::nullopt},
        {"null", std::nullopt},
        {"1709337570", std::nullopt},
        {R"(["2024-03-01T23:59:30"])", std::nullopt},
    };
    for (const auto& [json, expected] : rows)
        EXPECT_EQ(shown(timeOf(objectOf(object({{"key", json}, {"other", "1"}})), "key"_L1)), shown(expected))
            << json.toStdString();
}

TEST(JsonSpots, StrayElementsGetFewLines)
{
    for (const int count : {0, 1, 2, 19, 20, 21, 22, 5000}) {
        FakeLog log;
        StrayElements strays("parse"_L1, log);
        QStringList expected;
        for (int i = 0; i < count; ++i) {
            strays.skip(3 * i);
            if (i < 20)
                expected.append(u"parse:spot is not an object:[%1]"_s.arg(3 * i));
        }
        EXPECT_EQ(log.lines, expected) << count;
        strays.end();
        if (count > 20)
            expected.append(u"parse:more spots are not objects:[%1]"_s.arg(count - 20));
        EXPECT_EQ(log.lines, expected) << count;
    }
}

} // namespace spotwell
