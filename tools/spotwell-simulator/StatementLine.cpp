// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/StatementLine.h"

#include "tools/spotwell-simulator/Charset.h"

namespace spotwell::simulator
{
namespace
{

constexpr Seconds longestTime{86400.0};

QString plain(double number)
{
    return QString::number(number, 'g', 15);
}

} // namespace

bool StatementLine::textFollows() const
{
    return !atEnd() && words_[position_].kind != Word::Kind::bare;
}

void StatementLine::fail(const QString& message)
{
    if (error_.isNull())
        error_ = message;
}

bool StatementLine::take(QStringView keyword)
{
    if (atEnd() || words_[position_].kind != Word::Kind::bare || words_[position_].text != keyword)
        return false;
    ++position_;
    return true;
}

void StatementLine::demand(const QString& keywords)
{
    for (const QString& keyword : keywords.split(u' ')) {
        if (!take(keyword))
            return fail(QStringLiteral("\"%1\" expected%2").arg(keywords, insteadOf()));
    }
}

QString StatementLine::keyword(const QString& what)
{
    if (atEnd() || words_[position_].kind != Word::Kind::bare) {
        fail(QStringLiteral("%1 expected%2").arg(what, insteadOf()));
        return {};
    }
    return words_[position_++].text;
}

double StatementLine::number(const QString& what, double least, double most, bool whole)
{
    static constexpr QStringView digits = u"0123456789";
    bool valid = !atEnd() && words_[position_].kind != Word::Kind::text && !words_[position_].text.isEmpty();
    double value = least;
    if (valid) {
        const QString& text = words_[position_].text;
        for (const QChar character : text)
            valid = valid && (digits.contains(character) || (!whole && character == u'.'));
        value = valid ? text.toDouble(&valid) : least;
    }
    if (!valid || value < least || value > most) {
        fail(QStringLiteral("%1 expected, %2%3 to %4%5")
                 .arg(what, whole ? QStringLiteral("a whole number from ") : QStringLiteral("a number from "),
                      plain(least), plain(most), insteadOf()));
        return least;
    }
    ++position_;
    return value;
}

Seconds StatementLine::seconds()
{
    return Seconds{number(QStringLiteral("seconds"), 0.0, longestTime.count(), false)};
}

QByteArray StatementLine::bytes()
{
    QString charset = QStringLiteral("utf-8");
    if (!textFollows() && !atEnd()) {
        charset = words_[position_].text;
        if (!charsetNames().contains(charset)) {
            fail(QStringLiteral(
                     "a text or a character set expected instead of \"%1\"; the character sets are %2")
                     .arg(charset, charsetNames().join(QStringLiteral(", "))));
            return {};
        }
        ++position_;
    }
    if (!textFollows())
        fail(QStringLiteral("a text expected%1").arg(insteadOf()));
    QByteArray result;
    while (textFollows()) {
        QString missing;
        const auto encoded = encode(words_[position_].text, charset, &missing);
        if (!encoded) {
            fail(QStringLiteral("%1 has no character \"%2\"").arg(charset, missing));
            return {};
        }
        result.append(*encoded);
        ++position_;
    }
    if (result.isEmpty())
        fail(QStringLiteral("the text is empty"));
    return result;
}

void StatementLine::finish()
{
    if (!atEnd())
        fail(QStringLiteral("nothing more expected%1").arg(insteadOf()));
}

QString StatementLine::insteadOf() const
{
    return position_ == words_.size() ? QStringLiteral(" at the end of the line")
                                      : QStringLiteral(" instead of \"%1\"").arg(words_[position_].text);
}

} // namespace spotwell::simulator
