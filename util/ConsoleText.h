// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

namespace spotwell
{

/// The text of the console: entries in the order they came, bounded by cutting whole lines from the start.
///
/// Every entry is stored as a line feed followed by the entry's text. All counts are UTF-16 code units.
/// Beside the text it keeps account of what a view of it still has to do, so that many appends become one
/// edit.
class ConsoleText
{
public:
    /// append() trims when the text holds at least this many characters.
    static constexpr int trimmingThreshold = 19457;
    /// What append() trims to.
    static constexpr int trimmingTarget = 19456;
    /// An append that leaves at least this many characters brings the end of the text into view.
    static constexpr int scrollThreshold = 2;

    /// What turns the text of the previous takeChange() into the present one.
    struct Change {
        /// How many characters go from the start of what was there.
        qsizetype dropped = 0;
        /// What comes behind the rest.
        QString appended;
    };

    /// Adds `text` (no line feed at its end) and trims; an empty text changes nothing.
    void append(const QString& text);

    /// Cuts lines from the start, each with the line feed that ends it, until at most `maximum` characters
    /// are left or no line feed is. Returns the count of characters removed.
    int removeStartLinesUntil(int maximum);

    [[nodiscard]] qsizetype length() const { return buffer_.size() - start_; }
    [[nodiscard]] QString text() const { return buffer_.sliced(start_); }

    /// The change since the previous call, or since the beginning.
    [[nodiscard]] Change takeChange();

private:
    // The text stands in buffer_ from start_ on. What is cut stays in front of it until it is worth moving
    // the rest, so that cutting a line costs no more than finding its end.
    QString buffer_;
    qsizetype start_ = 0;
    // How many characters, from start_ on, takeChange() has reported already.
    qsizetype reported_ = 0;
    qsizetype dropped_ = 0;
};

/// `text` as the screen shows it, character for character: what a text document would take for structure or
/// what would disturb a line (control characters, embedding and isolating direction marks, halves of
/// surrogate pairs) becomes its control picture (U+2400 and up) or U+FFFD. Line feeds and tabs stay.
[[nodiscard]] QString consoleDisplayText(QString text);

} // namespace spotwell
