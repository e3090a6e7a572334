// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace spotwell::simulator
{

/// The character sets that a scenario can name, in lower case.
QStringList charsetNames();

/// Stands for the byte `value` of 0x80 and above inside a text, whatever the text's character set: a lone low
/// surrogate, which no UTF-8 file can hold.
constexpr char16_t rawByte(unsigned char value)
{
    return static_cast<char16_t>(0xDC00 + value);
}

/// `text` as bytes of the character set `charset`, one of charsetNames(). Absent when it holds a character
/// which that set lacks; `missing`, when given, then receives the character.
std::optional<QByteArray> encode(const QString& text, const QString& charset, QString* missing = nullptr);

} // namespace spotwell::simulator
