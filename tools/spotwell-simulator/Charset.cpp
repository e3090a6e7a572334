// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/Charset.h"

#include <unicode/ucnv.h>

#include <array>
#include <memory>
#include <utility>

namespace spotwell::simulator
{
namespace
{

struct CharsetName {
    QLatin1StringView name;
    const char* converter;
};

constexpr std::array charsets{
    CharsetName{QLatin1StringView{"utf-8"}, "UTF-8"},
    CharsetName{QLatin1StringView{"latin1"}, "ISO-8859-1"},
    CharsetName{QLatin1StringView{"latin2"}, "ISO-8859-2"},
    CharsetName{QLatin1StringView{"windows-1250"}, "windows-1250"},
    CharsetName{QLatin1StringView{"windows-1251"}, "windows-1251"},
    CharsetName{QLatin1StringView{"windows-1252"}, "windows-1252"},
    CharsetName{QLatin1StringView{"koi8-r"}, "KOI8-R"},
};

using Converter = std::unique_ptr<UConverter, decltype([](UConverter* converter) { ucnv_close(converter); })>;

Converter openConverter(const QString& charset)
{
    for (const CharsetName& known : charsets) {
        if (known.name != charset)
            continue;
        UErrorCode status = U_ZERO_ERROR;
        Converter converter{ucnv_open(known.converter, &status)};
        ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
        return U_SUCCESS(status) ? std::move(converter) : nullptr;
    }
    return nullptr;
}

bool isRawByte(QChar character)
{
    return character >= QChar{rawByte(0x80)} && character <= QChar{rawByte(0xFF)};
}

} // namespace

QStringList charsetNames()
{
    QStringList names;
    for (const CharsetName& known : charsets)
        names.append(known.name);
    return names;
}

std::optional<QByteArray> encode(const QString& text, const QString& charset, QString* missing)
{
    const Converter converter = openConverter(charset);
    if (!converter)
        return std::nullopt;
    QByteArray bytes;
    for (qsizetype i = 0; i < text.size();) {
        if (isRawByte(text[i])) {
            bytes.append(static_cast<char>(text[i].unicode() - rawByte(0)));
            ++i;
            continue;
        }
        const qsizetype units = text[i].isHighSurrogate() && i + 1 < text.size() ? 2 : 1;
        std::array<char, 8> character{};
        UErrorCode status = U_ZERO_ERROR;
        const int32_t length = ucnv_fromUChars(
            converter.get(), character.data(), static_cast<int32_t>(character.size()),
            reinterpret_cast<const UChar*>(text.utf16() + i), static_cast<int32_t>(units), &status);
        if (U_FAILURE(status)) {
            if (missing)
                *missing = text.mid(i, units);
            return std::nullopt;
        }
        bytes.append(character.data(), length);
        i += units;
    }
    return bytes;
}

} // namespace spotwell::simulator
