// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "cluster/TextDecoding.h"

#include <array>

namespace spotwell
{

namespace
{

// UTF-8, ASCII, ISO 8859-1, ISO 8859-2, Windows-1251, -1252, -1253, -1250.
constexpr std::array<unsigned long, 8> firstCandidates{4, 1, 5, 9, 11, 12, 13, 15};
constexpr unsigned long highestEncoding = 30;

QString convertedOrEmpty(QByteArrayView bytes, unsigned long encoding, const TextConverter& converter)
{
    return converter.convert(bytes, encoding).value_or(QString());
}

} // namespace

QString decodeClusterLine(const char* line, const TextConverter& converter, Log& log)
{
    const QByteArrayView bytes(line);
    if (bytes.isEmpty())
        return {};
    QString text = decodeStringData(bytes, converter, log);
    if (text.isEmpty())
        log.line(QStringLiteral("decodeClusterLine:unable to decode c string:[") +
                 QString::fromLatin1(bytes) + u']');
    return text;
}

QString decodeStringData(QByteArrayView bytes, const TextConverter& converter, Log& log)
{
    if (bytes.isEmpty())
        return {};
    QString text;
    for (const unsigned long encoding : firstCandidates) {
        text = convertedOrEmpty(bytes, encoding, converter);
        if (!text.isEmpty())
            return text;
    }
    for (unsigned long encoding = highestEncoding; encoding >= 1; --encoding) {
        text = convertedOrEmpty(bytes, encoding, converter);
        if (!text.isEmpty())
            return text;
    }
    log.line(QStringLiteral("decodeStringData:unable to decode c string:[") + QString::fromLatin1(bytes) +
             u']');
    return text;
}

QString encodingString(unsigned long encoding)
{
    switch (encoding) {
    case 1:
        return QStringLiteral("NSASCIIStringEncoding");
    case 2:
        return QStringLiteral("NSNEXTSTEPStringEncoding");
    case 3:
        return QStringLiteral("NSJapaneseEUCStringEncoding");
    case 4:
        return QStringLiteral("NSUTF8StringEncoding");
    case 5:
        return QStringLiteral("NSISOLatin1StringEncoding");
    case 6:
        return QStringLiteral("NSSymbolStringEncoding");
    case 7:
        return QStringLiteral("NSNonLossyASCIIStringEncoding");
    case 8:
        return QStringLiteral("NSShiftJISStringEncoding");
    case 9:
        return QStringLiteral("NSISOLatin2StringEncoding");
    case 10:
        return QStringLiteral("NSUnicodeStringEncoding");
    case 11:
        return QStringLiteral("NSWindowsCP1251StringEncoding");
    case 12:
        return QStringLiteral("NSWindowsCP1252StringEncoding");
    case 13:
        return QStringLiteral("NSWindowsCP1253StringEncoding");
    case 14:
        return QStringLiteral("NSWindowsCP1254StringEncoding");
    case 15:
        return QStringLiteral("NSWindowsCP1250StringEncoding");
    case 21:
        return QStringLiteral("NSISO2022JPStringEncoding");
    case 30:
        return QStringLiteral("NSMacOSRomanStringEncoding");
    default:
        return QStringLiteral("Unknown:%1").arg(encoding);
    }
}

QString stringUnknownEncoding(QByteArrayView bytes, const TextConverter& converter, Log& log)
{
    const DetectedText detected = converter.detect(bytes);
    if (detected.encoding == 0)
        log.line(QStringLiteral("stringUnknownEncoding:Could not determine string encoding."));
    else if (detected.lossy)
        log.line(QStringLiteral("stringUnknownEncoding:Lossy conversion occurred."));
    if (detected.text.isEmpty())
        log.line(QStringLiteral("stringUnknownEncoding:empty string."));
    return detected.text;
}

} // namespace spotwell
