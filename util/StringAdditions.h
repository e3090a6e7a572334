// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QStringView>

#include <cstdint>
#include <optional>

namespace spotwell
{

// TarnbrookAdditions: the string operations that the whole program shares. Lengths and positions count UTF-16
// units. A character set is given as the text of its members, each member one unit. An operation that finds
// nothing to do returns the receiver itself. All are pure and callable from any thread.

/// The receiver without double quotes and apostrophes.
[[nodiscard]] QString removeAllQuotes(const QString& receiver);

/// Whether `search` occurs in the receiver, letter case aside when `ignoringCase`. An empty `search` never
/// does.
[[nodiscard]] bool containsString(QStringView receiver, QStringView search, bool ignoringCase);

/// Whether the receiver holds no blank (U+0020). Nothing else is asked of a callsign, not even that there is
/// one.
[[nodiscard]] bool legalCall(QStringView receiver);

/// `prefix` followed by the receiver.
[[nodiscard]] QString stringByPrependingString(const QString& receiver, const QString& prefix);

/// The receiver without the members of `set`.
[[nodiscard]] QString removeCharactersInSet(const QString& receiver, QStringView set);

/// The receiver with each member of `set` replaced by `withStr`.
///
/// The contract is that of a loop which replaces the first member and searches again from the start until
/// none is left: the result holds no member of `set`. A replacement that itself holds one would never let
/// that loop end, so none may be passed (asserted as soon as there is something to replace). For every other
/// replacement one pass gives the same result, and that is what is done.
[[nodiscard]] QString replaceCharactersInSet(const QString& receiver, QStringView set,
                                             const QString& withStr);

/// The receiver with each occurrence of `target`, unit by unit and from left to right, replaced by `withStr`;
/// what was put in is not searched again. With an empty `target` or an empty `withStr` the receiver itself:
/// an empty replacement deletes nothing.
[[nodiscard]] QString replaceString(const QString& receiver, const QString& target, const QString& withStr);

/// The receiver without carriage returns and line feeds.
[[nodiscard]] QString removeLineControls(const QString& receiver);

/// `insert`, a blank and the receiver, in that order; just one of the two when the other is empty, and the
/// receiver alone when it holds `insert` already in whatever letter case.
[[nodiscard]] QString insertWithSpaceIfNotRedundant(const QString& receiver, const QString& insert);

/// The whole number that `text` begins with: white space is skipped, then an optional sign and ASCII digits
/// are read, and the rest does not matter. 0 when there is none; the nearest limit when it does not fit.
[[nodiscard]] std::int64_t integerValue(QStringView text);

/// The number that `text` begins with, as integerValue(), with a fraction behind a full stop (whatever the
/// locale) and an exponent. Absent when there is none; plus or minus infinity when it is too large.
[[nodiscard]] std::optional<double> leadingNumber(QStringView text);

/// The same, 0 when there is none.
[[nodiscard]] double doubleValue(QStringView text);

} // namespace spotwell
