// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "util/ConsoleText.h"

#include <algorithm>
#include <utility>

namespace spotwell
{

namespace
{

constexpr char16_t replacement = u'\uFFFD';
constexpr char16_t controlPictures = u'\u2400';
constexpr char16_t pictureOfDelete = u'\u2421';

/// What stands for `c` on the screen; `c` itself when it can be shown.
char16_t displayCharacter(char16_t c)
{
    if (c < 0x20)
        return c == u'\n' || c == u'\t' ? c : static_cast<char16_t>(controlPictures + c);
    if (c < 0x7F)
        return c;
    if (c == 0x7F)
        return pictureOfDelete;
    const bool isC1Control = c <= 0x9F;
    // The text document takes these for ends of lines and paragraphs, frames and embedded objects.
    const bool isDocumentMark = c == 0x2028 || c == 0x2029 || c == 0xFDD0 || c == 0xFDD1 || c == 0xFFFC;
    const bool reordersLine = (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
    return isC1Control || isDocumentMark || reordersLine ? replacement : c;
}

} // namespace

QString consoleDisplayText(QString text)
{
    const qsizetype size = text.size();
    for (qsizetype i = 0; i < size; ++i) {
        const char16_t c = std::as_const(text)[i].unicode();
        char16_t shown = displayCharacter(c);
        if (QChar::isSurrogate(c)) {
            if (QChar::isHighSurrogate(c) && i + 1 < size && std::as_const(text)[i + 1].isLowSurrogate()) {
                ++i;
                continue;
            }
            shown = replacement;
        }
        if (shown != c)
            text[i] = QChar(shown);
    }
    return text;
}

void ConsoleText::append(const QString& text)
{
    if (text.isEmpty())
        return;
    buffer_ += u'\n';
    buffer_ += text;
    if (length() >= trimmingThreshold)
        removeStartLinesUntil(trimmingTarget);
}

int ConsoleText::removeStartLinesUntil(int maximum)
{
    const qsizetype oldStart = start_;
    while (length() > maximum) {
        const qsizetype lineFeed = buffer_.indexOf(u'\n', start_);
        if (lineFeed < 0)
            break;
        start_ = lineFeed + 1;
    }
    const qsizetype removed = start_ - oldStart;
    const qsizetype removedOfReported = std::min(removed, reported_);
    dropped_ += removedOfReported;
    reported_ -= removedOfReported;
    if (start_ > trimmingTarget) {
        buffer_ = text();
        start_ = 0;
    }
    return static_cast<int>(removed);
}

ConsoleText::Change ConsoleText::takeChange()
{
    Change change{dropped_, buffer_.sliced(start_ + reported_)};
    dropped_ = 0;
    reported_ = length();
    return change;
}

} // namespace spotwell
