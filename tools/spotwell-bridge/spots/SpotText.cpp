// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/spots/SpotText.h"

namespace spotwell::bridge
{

namespace
{

/// How many units the character at `index` has.
qsizetype characterSize(QStringView text, qsizetype index)
{
    const bool isPair =
        text[index].isHighSurrogate() && index + 1 < text.size() && text[index + 1].isLowSurrogate();
    return isPair ? 2 : 1;
}

bool isWithin(QChar character, char16_t first, char16_t last)
{
    return character >= first && character <= last;
}

/// Whether a locator may hold `character` in its pair of that number, counted from 0.
bool isLocatorCharacter(QChar character, qsizetype pair)
{
    if (pair % 2 == 1)
        return isWithin(character, u'0', u'9');
    if (pair == 0)
        return isWithin(character, u'A', u'R') || isWithin(character, u'a', u'r');
    return isWithin(character, u'A', u'X') || isWithin(character, u'a', u'x');
}

bool namesPark(QStringView comment, QStringView park)
{
    for (qsizetype at = comment.indexOf(park, 0, Qt::CaseInsensitive); at >= 0;
         at = comment.indexOf(park, at + 1, Qt::CaseInsensitive)) {
        const qsizetype end = at + park.size();
        const bool begins = at == 0 || !comment[at - 1].isLetterOrNumber();
        const bool ends = end == comment.size() || !comment[end].isLetterOrNumber();
        if (begins && ends)
            return true;
    }
    return false;
}

} // namespace

bool isControl(QChar character)
{
    return character < u' ' || isWithin(character, 0x7F, 0x9F) || isWithin(character, 0x2028, 0x2029);
}

QString plainText(QStringView text)
{
    QString plain = text.toString();
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (isControl(text[i]))
            plain[i] = u' ';
        else if (characterSize(text, i) == 2)
            ++i;
        else if (text[i].isSurrogate() || text[i] >= char16_t{0xFFFE})
            plain[i] = QChar::ReplacementCharacter;
    }
    return plain;
}

qsizetype characterCount(QStringView text)
{
    qsizetype count = 0;
    for (qsizetype i = 0; i < text.size(); i += characterSize(text, i))
        ++count;
    return count;
}

QStringView firstCharacters(QStringView text, qsizetype count)
{
    qsizetype end = 0;
    for (; count > 0 && end < text.size(); --count)
        end += characterSize(text, end);
    return text.first(end);
}

QStringView Words::next()
{
    qsizetype begin = 0;
    while (begin < rest_.size() && rest_[begin].isSpace())
        ++begin;
    qsizetype end = begin;
    while (end < rest_.size() && !rest_[end].isSpace())
        ++end;
    const QStringView word = rest_.sliced(begin, end - begin);
    rest_ = rest_.sliced(end);
    return word;
}

bool isLocator(QStringView text)
{
    if (text.size() < 4 || text.size() > 10 || text.size() % 2 != 0)
        return false;
    for (qsizetype i = 0; i < text.size(); ++i)
        if (!isLocatorCharacter(text[i], i / 2))
            return false;
    return true;
}

QString commentWithPark(const QString& comment, const QString& park)
{
    if (park.isEmpty() || namesPark(comment, park))
        return comment;
    return comment.isEmpty() ? park : QString(comment + u' ' + park);
}

} // namespace spotwell::bridge
