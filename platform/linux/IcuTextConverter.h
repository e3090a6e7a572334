// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/TextConverter.h"

#include <map>
#include <memory>
#include <mutex>
#include <string_view>

struct UConverter;

namespace spotwell
{

/// Text conversion by ICU's converters and detector, with rules and tables of its own where ICU has none or
/// is laxer than the published character set.
///
/// Strict means in particular: no overlong or truncated UTF-8 and no surrogates in it; no lone surrogates and
/// no odd byte in UTF-16; no byte that the Unicode Consortium's table of a Windows code page leaves
/// undefined; no private characters in the Japanese sets. A byte order mark is consumed in UTF-16 and stays
/// in UTF-8.
class IcuTextConverter final : public TextConverter
{
public:
    IcuTextConverter() = default;
    ~IcuTextConverter() override;
    IcuTextConverter(const IcuTextConverter&) = delete;
    IcuTextConverter& operator=(const IcuTextConverter&) = delete;

    [[nodiscard]] std::optional<QString> convert(QByteArrayView bytes, unsigned long encoding) const override;
    [[nodiscard]] DetectedText detect(QByteArrayView bytes) const override;

private:
    /// A text, U+FFFD standing for what is invalid in the encoding, and whether nothing was.
    struct Conversion {
        QString text;
        bool exact = true;
    };
    struct Close {
        void operator()(UConverter* converter) const;
    };

    /// Absent when `encoding` names none.
    [[nodiscard]] std::optional<Conversion> convertAny(QByteArrayView bytes, unsigned long encoding) const;
    [[nodiscard]] std::optional<Conversion> convertWithIcu(QByteArrayView bytes, const char* name) const;

    // Opening a converter costs far more than using one.
    mutable std::mutex mutex_;
    mutable std::map<std::string_view, std::unique_ptr<UConverter, Close>> converters_;
};

} // namespace spotwell
