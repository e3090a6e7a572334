// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>

namespace spotwell
{

/// What the detection of an encoding gave.
struct DetectedText {
    /// The encoding's number; 0 when none was found.
    unsigned long encoding = 0;
    /// The converted text; empty when none was found.
    QString text;
    /// Whether bytes that do not belong to the encoding were replaced.
    bool lossy = false;
};

/// Turns bytes into text. Callable from any thread.
///
/// Encodings go by the numbers 1 to 30 that text encodings have in this program: 1 ASCII, 2 NeXTSTEP, 3
/// EUC-JP, 4 UTF-8, 5 ISO 8859-1, 6 Symbol, 7 ASCII with escapes, 8 Shift JIS, 9 ISO 8859-2, 10 UTF-16
/// (big-endian unless a byte order mark says otherwise), 11 to 15 Windows-1251, -1252, -1253, -1254, -1250,
/// 21 ISO-2022-JP, 30 Mac OS Roman.
class TextConverter
{
public:
    virtual ~TextConverter() = default;
    /// The text of `bytes`, strictly: absent when a single byte is not valid in the encoding, and when the
    /// number names none.
    [[nodiscard]] virtual std::optional<QString> convert(QByteArrayView bytes,
                                                         unsigned long encoding) const = 0;
    /// Guesses the encoding of `bytes` and converts them, replacing what does not fit.
    [[nodiscard]] virtual DetectedText detect(QByteArrayView bytes) const = 0;
};

} // namespace spotwell
