// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/IcuTextConverter.h"

#include "platform/linux/CharacterTables.h"

#include <QStringDecoder>
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/ucsdet.h>

#include <algorithm>
#include <limits>

namespace spotwell
{

namespace
{

constexpr char16_t replacement = u'\uFFFD';

enum Encoding : unsigned long {
    ascii = 1,
    nextStep = 2,
    japaneseEuc = 3,
    utf8 = 4,
    isoLatin1 = 5,
    symbol = 6,
    nonLossyAscii = 7,
    shiftJis = 8,
    isoLatin2 = 9,
    utf16 = 10,
    windows1251 = 11,
    windows1252 = 12,
    windows1253 = 13,
    windows1254 = 14,
    windows1250 = 15,
    iso2022Japanese = 21,
    macOsRoman = 30,
};

/// ICU's name for the encodings that are left to it; null for all others.
const char* icuName(unsigned long encoding)
{
    switch (encoding) {
    case japaneseEuc:
        return "euc-jp-2007";
    case shiftJis:
        return "Shift_JIS";
    case isoLatin2:
        return "ISO-8859-2";
    case windows1251:
        return "windows-1251";
    case windows1252:
        return "windows-1252";
    case windows1253:
        return "windows-1253";
    case windows1254:
        return "windows-1254";
    case windows1250:
        return "windows-1250";
    case iso2022Japanese:
        return "ISO-2022-JP";
    case macOsRoman:
        return "macintosh";
    default:
        return nullptr;
    }
}

/// The encoding of one of the detector's names; 0 for those that have no number here.
unsigned long encodingNamed(std::string_view name)
{
    static constexpr std::pair<std::string_view, unsigned long> names[]{
        {"UTF-8", utf8},
        {"UTF-16BE", utf16},
        {"UTF-16LE", utf16},
        {"Shift_JIS", shiftJis},
        {"EUC-JP", japaneseEuc},
        {"ISO-2022-JP", iso2022Japanese},
        {"ISO-8859-1", isoLatin1},
        {"ISO-8859-2", isoLatin2},
        // Differs from Windows-1254 in control characters only, and is reported only where there are none.
        {"ISO-8859-9", windows1254},
        {"windows-1250", windows1250},
        {"windows-1251", windows1251},
        {"windows-1252", windows1252},
        {"windows-1253", windows1253},
        {"windows-1254", windows1254},
    };
    const auto* const found = std::find_if(std::begin(names), std::end(names),
                                           [name](const auto& entry) { return entry.first == name; });
    return found == std::end(names) ? 0 : found->second;
}

bool isPrivate(QChar unit)
{
    return unit >= u'\uE000' && unit <= u'\uF8FF';
}

bool isHighControl(QChar unit)
{
    return unit >= u'\u0080' && unit <= u'\u009F';
}

/// Replaces the units that `isInvalid` names; whether there were none.
template <typename Predicate>
bool replaceWhere(QString& text, Predicate isInvalid)
{
    if (std::none_of(text.cbegin(), text.cend(), isInvalid))
        return true;
    std::replace_if(text.begin(), text.end(), isInvalid, QChar(replacement));
    return false;
}

/// Replaces surrogates that are not one of a pair; whether there were none.
bool replaceLoneSurrogates(QString& text)
{
    bool exact = true;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (!text.at(i).isSurrogate())
            continue;
        if (text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            ++i;
        } else {
            text[i] = replacement;
            exact = false;
        }
    }
    return exact;
}

bool fromAscii(QByteArrayView bytes, QString& text)
{
    text = QString::fromLatin1(bytes);
    return replaceWhere(text, [](QChar unit) { return unit > u'\u007F'; });
}

bool fromUtf8(QByteArrayView bytes, QString& text)
{
    // Without the flag the decoder would drop a byte order mark.
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    text = decoder(bytes);
    return !decoder.hasError();
}

/// The byte order is that of the byte order mark, if there is one, and else big-endian unless told otherwise.
bool fromUtf16(QByteArrayView bytes, QString& text, bool bigEndian = true)
{
    qsizetype at = 0;
    if (bytes.startsWith("\xFE\xFF") || bytes.startsWith("\xFF\xFE")) {
        bigEndian = bytes.startsWith("\xFE\xFF");
        at = 2;
    }
    text.reserve(bytes.size() / 2 + 1);
    for (; at + 1 < bytes.size(); at += 2) {
        const auto first = static_cast<unsigned char>(bytes[at]);
        const auto second = static_cast<unsigned char>(bytes[at + 1]);
        text += QChar(static_cast<char16_t>(bigEndian ? first << 8 | second : second << 8 | first));
    }
    const bool paired = replaceLoneSurrogates(text);
    if (at == bytes.size())
        return paired;
    text += replacement;
    return false;
}

int digitValue(char digit)
{
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    if (digit >= 'A' && digit <= 'F')
        return digit - 'A' + 10;
    if (digit >= 'a' && digit <= 'f')
        return digit - 'a' + 10;
    return std::numeric_limits<int>::max();
}

/// The number of exactly `length` digits that `bytes` begins with, if it does.
std::optional<int> leadingNumber(QByteArrayView bytes, qsizetype length, int base)
{
    if (bytes.size() < length)
        return std::nullopt;
    int value = 0;
    for (const char digit : bytes.first(length)) {
        if (digitValue(digit) >= base)
            return std::nullopt;
        value = value * base + digitValue(digit);
    }
    return value;
}

/// A unit of text and the count of bytes that stand for it.
struct Escape {
    int unit;
    qsizetype length;
};

/// The escape that `bytes` begins with: \uXXXX a UTF-16 unit, \ooo a character below 256, \\ a backslash.
std::optional<Escape> leadingEscape(QByteArrayView bytes)
{
    if (bytes.startsWith("\\\\"))
        return Escape{'\\', 2};
    if (bytes.startsWith("\\u")) {
        const std::optional<int> unit = leadingNumber(bytes.sliced(2), 4, 16);
        return unit ? std::optional{Escape{*unit, 6}} : std::nullopt;
    }
    const std::optional<int> character = leadingNumber(bytes.sliced(1), 3, 8);
    return character && *character <= 0xFF ? std::optional{Escape{*character, 4}} : std::nullopt;
}

bool fromNonLossyAscii(QByteArrayView bytes, QString& text)
{
    bool exact = true;
    while (!bytes.isEmpty()) {
        std::optional<Escape> next;
        if (bytes.front() == '\\')
            next = leadingEscape(bytes);
        else if (static_cast<unsigned char>(bytes.front()) <= 0x7F)
            next = Escape{bytes.front(), 1};
        exact = exact && next;
        text += QChar(next ? static_cast<char16_t>(next->unit) : replacement);
        bytes = bytes.sliced(next ? next->length : 1);
    }
    return replaceLoneSurrogates(text) && exact;
}

/// By a table of all 256 bytes.
template <typename CharacterOf>
bool fromTable(QByteArrayView bytes, QString& text, CharacterOf characterOf)
{
    bool exact = true;
    text.reserve(bytes.size());
    for (const char byte : bytes) {
        const char16_t character = characterOf(static_cast<unsigned char>(byte));
        const bool valid = character != 0 || byte == '\0';
        text += QChar(valid ? character : replacement);
        exact = exact && valid;
    }
    return exact;
}

char16_t nextStepCharacter(unsigned char byte)
{
    return byte < 0x80 ? char16_t{byte} : nextStepUpperHalf[byte - 0x80U];
}

char16_t symbolCharacter(unsigned char byte)
{
    return symbolSet[byte];
}

/// ICU's table gives these three bytes the meaning they have on its maker's own machines.
void restoreControls(QString& text)
{
    for (QChar& unit : text) {
        if (unit == u'\u001C')
            unit = u'\u001A';
        else if (unit == u'\u007F')
            unit = u'\u001C';
        else if (unit == u'\u001A')
            unit = u'\u007F';
    }
}

/// Called by ICU for bytes that are invalid or unassigned; `context` is the flag to clear.
void U_CALLCONV replaceInvalid(const void* context, UConverterToUnicodeArgs* arguments, const char* /*bytes*/,
                               int32_t /*length*/, UConverterCallbackReason reason, UErrorCode* status)
{
    if (reason > UCNV_IRREGULAR)
        return;
    *const_cast<bool*>(static_cast<const bool*>(context)) = false;
    *status = U_ZERO_ERROR;
    ucnv_cbToUWriteUChars(arguments, &replacement, 1, 0, status);
}

} // namespace

void IcuTextConverter::Close::operator()(UConverter* converter) const
{
    ucnv_close(converter);
}

IcuTextConverter::~IcuTextConverter() = default;

std::optional<IcuTextConverter::Conversion> IcuTextConverter::convertWithIcu(QByteArrayView bytes,
                                                                             const char* name) const
{
    const std::lock_guard lock(mutex_);
    auto& converter = converters_[name];
    UErrorCode status = U_ZERO_ERROR;
    if (!converter)
        converter.reset(ucnv_open(name, &status));
    if (!converter)
        return std::nullopt;
    Conversion conversion;
    ucnv_resetToUnicode(converter.get());
    ucnv_setToUCallBack(converter.get(), replaceInvalid, &conversion.exact, nullptr, nullptr, &status);
    const char* source = bytes.data();
    do {
        char16_t buffer[1024];
        char16_t* target = buffer;
        status = U_ZERO_ERROR;
        ucnv_toUnicode(converter.get(), &target, std::end(buffer), &source, bytes.end(), nullptr, 1, &status);
        conversion.text.append(reinterpret_cast<const QChar*>(buffer), target - buffer);
    } while (status == U_BUFFER_OVERFLOW_ERROR);
    conversion.exact = conversion.exact && U_SUCCESS(status) != 0;
    return conversion;
}

std::optional<IcuTextConverter::Conversion> IcuTextConverter::convertAny(QByteArrayView bytes,
                                                                         unsigned long encoding) const
{
    Conversion conversion;
    switch (encoding) {
    case ascii:
        conversion.exact = fromAscii(bytes, conversion.text);
        return conversion;
    case nextStep:
        conversion.exact = fromTable(bytes, conversion.text, nextStepCharacter);
        return conversion;
    case utf8:
        conversion.exact = fromUtf8(bytes, conversion.text);
        return conversion;
    case isoLatin1:
        conversion.text = QString::fromLatin1(bytes);
        return conversion;
    case symbol:
        conversion.exact = fromTable(bytes, conversion.text, symbolCharacter);
        return conversion;
    case nonLossyAscii:
        conversion.exact = fromNonLossyAscii(bytes, conversion.text);
        return conversion;
    case utf16:
        conversion.exact = fromUtf16(bytes, conversion.text);
        return conversion;
    default:
        break;
    }
    const char* const name = icuName(encoding);
    if (name == nullptr)
        return std::nullopt;
    std::optional<Conversion> byIcu = convertWithIcu(bytes, name);
    if (!byIcu || encoding == isoLatin2 || encoding == macOsRoman)
        return byIcu;
    // What these sets leave undefined, ICU turns into control or private characters, and byte AA of
    // Windows-1253 into the ordinal indicator.
    const bool defined = replaceWhere(byIcu->text, [encoding](QChar unit) {
        return isHighControl(unit) || isPrivate(unit) || (encoding == windows1253 && unit == u'\u00AA');
    });
    byIcu->exact = byIcu->exact && defined;
    if (encoding == shiftJis)
        restoreControls(byIcu->text);
    return byIcu;
}

std::optional<QString> IcuTextConverter::convert(QByteArrayView bytes, unsigned long encoding) const
{
    std::optional<Conversion> conversion = convertAny(bytes, encoding);
    if (!conversion || !conversion->exact)
        return std::nullopt;
    return std::move(conversion->text);
}

DetectedText IcuTextConverter::detect(QByteArrayView bytes) const
{
    // The detector looks at the beginning only, and counts with 32 bits.
    constexpr qsizetype enough = 65536;
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UCharsetDetector, decltype(&ucsdet_close)> detector(ucsdet_open(&status),
                                                                              &ucsdet_close);
    if (bytes.isEmpty() || !detector)
        return {};
    ucsdet_setText(detector.get(), bytes.data(), static_cast<int32_t>(std::min(bytes.size(), enough)),
                   &status);
    int32_t count = 0;
    const UCharsetMatch** const matches = ucsdet_detectAll(detector.get(), &count, &status);
    if (U_FAILURE(status) != 0)
        return {};
    // Best guess first.
    for (int32_t i = 0; i < count; ++i) {
        const char* const name = ucsdet_getName(matches[i], &status);
        const unsigned long encoding = name == nullptr ? 0 : encodingNamed(name);
        std::optional<Conversion> conversion;
        if (encoding == utf16) {
            conversion.emplace();
            conversion->exact = fromUtf16(bytes, conversion->text, std::string_view(name) == "UTF-16BE");
        } else {
            conversion = convertAny(bytes, encoding);
        }
        if (conversion)
            return {encoding, std::move(conversion->text), !conversion->exact};
    }
    return {};
}

} // namespace spotwell
