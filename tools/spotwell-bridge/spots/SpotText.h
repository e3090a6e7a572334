// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QStringView>

namespace spotwell::bridge
{

// The text rules that reading and forming spots share. Characters are Unicode code points. Pure functions.

/// Whether a terminal, or whoever reads line by line, may act on `character` instead of showing it: C0 and C1
/// controls, DEL, U+2028 and U+2029.
[[nodiscard]] bool isControl(QChar character);

/// `text` with a blank for each control character, and U+FFFD for what is no character of XML 1.0 (section
/// 2.2) either: lone surrogates, U+FFFE and U+FFFF. The length stays.
[[nodiscard]] QString plainText(QStringView text);

/// The number of characters; a lone surrogate counts as one.
[[nodiscard]] qsizetype characterCount(QStringView text);

/// The first `count` characters of `text`, or all of it; empty for a `count` below 1.
[[nodiscard]] QStringView firstCharacters(QStringView text, qsizetype count);

/// Takes the words of a text, which blanks part, one by one.
class Words
{
public:
    explicit Words(QStringView text) : rest_(text) {}
    /// The next word; empty when there is none.
    QStringView next();
    /// What stands behind the last word taken.
    [[nodiscard]] QStringView rest() const { return rest_; }

private:
    QStringView rest_;
};

/// Whether `text` is a Maidenhead locator of 4, 6, 8 or 10 characters, in whatever letter case.
[[nodiscard]] bool isLocator(QStringView text);

/// `comment`, a blank and `park`; just one of the two where the other is empty or where `comment` names
/// `park` already, as a whole word and letter case aside.
[[nodiscard]] QString commentWithPark(const QString& comment, const QString& park);

} // namespace spotwell::bridge
