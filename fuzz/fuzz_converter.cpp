// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// Every encoding and the detector, on any bytes. UTF-8 is compared with a second implementation.

#include "fuzz/Check.h"
#include "platform/linux/IcuTextConverter.h"

#include <unicode/ustring.h>

#include <vector>

namespace
{

bool isWellFormed(QStringView text)
{
    return text.isValidUtf16();
}

/// The same by ICU, which knows nothing of Qt's decoder.
std::optional<QString> utf8ByIcu(QByteArrayView bytes)
{
    std::vector<char16_t> units(static_cast<std::size_t>(bytes.size()) + 1);
    int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8(units.data(), static_cast<int32_t>(units.size()), &length, bytes.data(),
                  static_cast<int32_t>(bytes.size()), &status);
    if (U_FAILURE(status) != 0)
        return std::nullopt;
    return QStringView(units.data(), length).toString();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    using spotwell::check;
    static const spotwell::IcuTextConverter converter;
    const QByteArrayView bytes(data, static_cast<qsizetype>(size));
    for (unsigned long encoding = 0; encoding <= 31; ++encoding) {
        const std::optional<QString> text = converter.convert(bytes, encoding);
        if (!text)
            continue;
        check(isWellFormed(*text), "texts are well-formed");
        check(text->size() <= bytes.size(), "a text has no more units than bytes");
        check(*text == converter.convert(bytes, encoding),
              "a conversion depends on nothing that went before");
    }
    check(converter.convert(bytes, 4) == utf8ByIcu(bytes), "UTF-8 as ICU reads it");
    check(converter.convert(bytes, 5) == QString::fromLatin1(bytes), "ISO 8859-1 takes everything");

    const spotwell::DetectedText detected = converter.detect(bytes);
    check(isWellFormed(detected.text), "detected texts are well-formed");
    check(detected.encoding != 0 || detected.text.isEmpty(), "no text without an encoding");
    return 0;
}
