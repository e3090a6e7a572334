// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "cluster/TextDecoding.h"
#include "platform/linux/IcuTextConverter.h"
#include "tests/fakes/FakeServices.h"

#include <gtest/gtest.h>

namespace spotwell
{

namespace
{

using namespace Qt::StringLiterals;

QByteArray bytesOf(const char* hex)
{
    return QByteArray::fromHex(hex);
}

TEST(IcuTextConverterDetect, FindsNothingInNothing)
{
    const DetectedText detected = IcuTextConverter().detect({});
    EXPECT_EQ(detected.encoding, 0U);
    EXPECT_EQ(detected.text, QString());
    EXPECT_FALSE(detected.lossy);
}

TEST(IcuTextConverterDetect, FindsCommonEncodings)
{
    const QString japanese =
        u"\u65E5\u672C\u8A9E\u306E\u6587\u7AE0\u3067\u3059\u3002\u3053\u308C\u306F\u30C6\u30B9\u30C8\u3067\u3059\u3002"_s;
    const QByteArray shiftJisBytes =
        bytesOf("93fa967b8cea82cc95b68fcd82c582b781428db182ea82cd83658358836782c582b78142");
    const IcuTextConverter converter;
    struct Expectation {
        QByteArray bytes;
        unsigned long encoding;
        QString text;
    };
    const QString french =
        u"Les \u00E9metteurs fran\u00E7ais sont \u00E0 l'\u00E9coute de la fr\u00E9quence des \u00E9trangers"_s;
    const QString russian =
        u"\u041F\u0440\u0438\u0432\u0435\u0442, \u044D\u0442\u043E \u0440\u0443\u0441\u0441\u043A\u0438\u0439 \u0442\u0435\u043A\u0441\u0442 \u0434\u043B\u044F \u043F\u0440\u043E\u0432\u0435\u0440\u043A\u0438"_s;
    QByteArray russianBytes;
    for (const QChar unit : russian)
        russianBytes +=
            static_cast<char>(unit >= u'\u0410' ? unit.unicode() - 0x0410 + 0xC0 : unit.unicode());
    for (const Expectation& expectation : {
             Expectation{japanese.toUtf8(), 4, japanese},
             Expectation{french.toLatin1(), 5, french},
             Expectation{french.toUtf8(), 4, french},
             Expectation{russianBytes, 11, russian},
             Expectation{bytesOf("FEFF00480065006C006C006F"), 10, u"Hello"_s},
             Expectation{bytesOf("FFFE480065006C006C006F00"), 10, u"Hello"_s},
             Expectation{bytesOf("480065006C006C006F002000740068006500720065002E000A00"), 10,
                         u"Hello there.\n"_s},
         }) {
        const DetectedText detected = converter.detect(expectation.bytes);
        EXPECT_EQ(detected.encoding, expectation.encoding) << expectation.bytes.toHex().toStdString();
        EXPECT_EQ(detected.text, expectation.text);
        EXPECT_FALSE(detected.lossy);
    }
    EXPECT_EQ(converter.detect(shiftJisBytes).encoding, 8U);
}

TEST(IcuTextConverterDetect, ReplacesWhatDoesNotFit)
{
    const QString text =
        u"\u65E5\u672C\u8A9E\u306E\u6587\u7AE0\u3067\u3059\u3002\u3053\u308C\u306F\u30C6\u30B9\u30C8"_s;
    const DetectedText utf8 = IcuTextConverter().detect(QByteArray("\xEF\xBB\xBF") + text.toUtf8() + '\xE9');
    EXPECT_EQ(utf8.encoding, 4U);
    EXPECT_EQ(utf8.text, QString(QChar(0xFEFF)) + text + u'\uFFFD');
    EXPECT_TRUE(utf8.lossy);

    const DetectedText utf16 = IcuTextConverter().detect(bytesOf("FEFF0048DE00006900"));
    EXPECT_EQ(utf16.encoding, 10U);
    EXPECT_EQ(utf16.text, u"H\uFFFDi\uFFFD"_s);
    EXPECT_TRUE(utf16.lossy);

    const DetectedText japanese =
        IcuTextConverter().detect(QByteArray("\x1B$B") + "$3$l$OF|K\\8l$G$9" + "\x1B(B" + '\x80' + "!");
    EXPECT_EQ(japanese.encoding, 21U);
    EXPECT_EQ(japanese.text, u"\u3053\u308C\u306F\u65E5\u672C\u8A9E\u3067\u3059\uFFFD!"_s);
    EXPECT_TRUE(japanese.lossy);
}

TEST(IcuTextConverterDetect, GivesATextForEverySingleByte)
{
    const IcuTextConverter converter;
    for (int byte = 0; byte < 256; ++byte) {
        const DetectedText detected = converter.detect(QByteArray(1, static_cast<char>(byte)));
        EXPECT_EQ(detected.encoding == 0, detected.text.isEmpty()) << byte;
    }
}

// The decoding of cluster lines with the real conversions behind it.

QString decoded(const char* bytes, const QStringList& expectedLog = {})
{
    const IcuTextConverter converter;
    FakeLog log;
    QString text = decodeClusterLine(bytes, converter, log);
    EXPECT_EQ(log.lines, expectedLog);
    return text;
}

TEST(ClusterLineByRealConversion, ReadsUtf8ThenIsoLatin1)
{
    EXPECT_EQ(decoded(""), QString());
    EXPECT_EQ(decoded("DX de K1ABC:     14074.0"), u"DX de K1ABC:     14074.0"_s);
    EXPECT_EQ(decoded("\xC3\xA9"), u"\u00E9"_s);
    EXPECT_EQ(decoded("\xE9"), u"\u00E9"_s);
    EXPECT_EQ(decoded("\x80"), u"\u0080"_s);
    EXPECT_EQ(decoded("\xC3\xA9\xE9"), u"\u00C3\u00A9\u00E9"_s);
}

TEST(ClusterLineByRealConversion, EndsAtTheFirstNul)
{
    EXPECT_EQ(decoded("before\0behind"), u"before"_s);
}

TEST(ClusterLineByRealConversion, TakesEveryByte)
{
    QByteArray all;
    for (int byte = 1; byte < 256; ++byte)
        all += static_cast<char>(byte);
    EXPECT_EQ(decoded(all.constData()), QString::fromLatin1(all));
}

TEST(UnknownEncodingByRealDetection, SaysWhenThereIsNothing)
{
    const IcuTextConverter converter;
    FakeLog log;
    EXPECT_EQ(stringUnknownEncoding({}, converter, log), QString());
    EXPECT_EQ(log.lines, (QStringList{u"stringUnknownEncoding:Could not determine string encoding."_s,
                                      u"stringUnknownEncoding:empty string."_s}));
}

} // namespace

} // namespace spotwell
