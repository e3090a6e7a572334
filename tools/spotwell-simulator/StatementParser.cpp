#include "tools/spotwell-simulator/StatementParser.h"

#include "tools/spotwell-simulator/Charset.h"

#include <utility>

namespace spotwell::simulator
{
namespace
{

constexpr Seconds longestTime{86400.0};
constexpr Seconds defaultWithin{5.0};
constexpr Seconds defaultCut{0.05};
constexpr double mostFlood = 1e10;
constexpr double highestRate = 100'000.0;
constexpr double mostRounds = 1'000'000.0;

using What = decltype(Statement::what);

/// The words of one line, read from the left. The first error stays; after it nothing is read any more.
class Line
{
public:
    explicit Line(const std::vector<Word>& words) : words_(words) {}

    [[nodiscard]] bool failed() const { return !error.isNull(); }
    [[nodiscard]] bool atEnd() const { return position_ == words_.size() || failed(); }
    [[nodiscard]] bool textFollows() const { return !atEnd() && words_[position_].kind != Word::Kind::bare; }

    void fail(const QString& message)
    {
        if (error.isNull())
            error = message;
    }

    /// Takes the keyword if it comes next.
    bool take(QStringView keyword)
    {
        if (atEnd() || words_[position_].kind != Word::Kind::bare || words_[position_].text != keyword)
            return false;
        ++position_;
        return true;
    }

    /// Takes keywords that have to come next, each separated by a blank.
    void demand(const QString& keywords)
    {
        for (const QString& keyword : keywords.split(u' ')) {
            if (!take(keyword))
                return fail(QStringLiteral("\"%1\" expected%2").arg(keywords, insteadOf()));
        }
    }

    QString keyword()
    {
        if (atEnd() || words_[position_].kind != Word::Kind::bare) {
            fail(QStringLiteral("a command expected%1").arg(insteadOf()));
            return {};
        }
        return words_[position_++].text;
    }

    /// A decimal number from `least` to `most`; `what` names it in the error.
    double number(const QString& what, double least, double most, bool whole)
    {
        static constexpr QStringView digits = u"0123456789";
        bool valid =
            !atEnd() && words_[position_].kind != Word::Kind::text && !words_[position_].text.isEmpty();
        double value = least;
        if (valid) {
            const QString& text = words_[position_].text;
            for (const QChar character : text)
                valid = valid && (digits.contains(character) || (!whole && character == u'.'));
            value = valid ? text.toDouble(&valid) : least;
        }
        if (!valid || value < least || value > most) {
            fail(QStringLiteral("%1 expected, %2%3 to %4%5")
                     .arg(what,
                          whole ? QStringLiteral("a whole number from ") : QStringLiteral("a number from "),
                          plain(least), plain(most), insteadOf()));
            return least;
        }
        ++position_;
        return value;
    }

    Seconds seconds() { return Seconds{number(QStringLiteral("seconds"), 0.0, longestTime.count(), false)}; }

    /// One or more texts, joined, with an optional character set in front.
    QByteArray bytes()
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

    void finish()
    {
        if (!atEnd())
            fail(QStringLiteral("nothing more expected%1").arg(insteadOf()));
    }

    QString error;

private:
    static QString plain(double number) { return QString::number(number, 'g', 15); }

    [[nodiscard]] QString insteadOf() const
    {
        return position_ == words_.size() ? QStringLiteral(" at the end of the line")
                                          : QStringLiteral(" instead of \"%1\"").arg(words_[position_].text);
    }

    const std::vector<Word>& words_;
    std::size_t position_ = 0;
};

Spots parseSpots(Line& line)
{
    Spots spots{};
    spots.count =
        static_cast<int>(line.number(QStringLiteral("how many spots"), 1, SpotLines::mostLines, true));
    if (line.take(u"as"))
        line.demand(QStringLiteral("fast as possible"));
    else if (line.take(u"at"))
        spots.rate = line.number(QStringLiteral("lines a second"), 0.01, highestRate, false);
    else if (!line.failed())
        line.demand(QStringLiteral("at"));
    if (line.take(u"length"))
        spots.format.length = static_cast<int>(
            line.number(QStringLiteral("characters"), SpotFormat::shortest, SpotFormat::longest, true));
    if (line.take(u"plain"))
        spots.format.comment = SpotFormat::Comment::plain;
    else if (line.take(u"stamped"))
        spots.format.comment = SpotFormat::Comment::stamped;
    return spots;
}

Flood parseFlood(Line& line)
{
    Flood flood{};
    flood.bytes = static_cast<qint64>(line.number(QStringLiteral("how many bytes"), 1, mostFlood, true));
    if (line.take(u"in")) {
        line.demand(QStringLiteral("one line"));
        flood.oneLine = true;
    }
    return flood;
}

ExpectText parseExpectText(Line& line, std::optional<QByteArray> bytes)
{
    ExpectText expect{std::move(bytes), std::nullopt, defaultWithin};
    if (line.take(u"after")) {
        expect.after = line.seconds();
        expect.within = *expect.after + defaultWithin;
    }
    if (line.take(u"within")) {
        expect.within = line.seconds();
        if (expect.after && expect.within <= *expect.after)
            line.fail(QStringLiteral("\"within\" has to be later than \"after\""));
    }
    return expect;
}

What parseExpect(Line& line)
{
    if (line.take(u"nothing")) {
        line.demand(QStringLiteral("for"));
        return ExpectNothing{line.seconds()};
    }
    if (line.take(u"close")) {
        ExpectClose expect{defaultWithin, false};
        if (line.take(u"within"))
            expect.within = line.seconds();
        if (line.take(u"ignoring")) {
            line.demand(QStringLiteral("text"));
            expect.ignoringText = true;
        }
        return expect;
    }
    if (line.take(u"line"))
        return parseExpectText(line, std::nullopt);
    return parseExpectText(line, line.bytes());
}

StaySilent parseStaySilent(Line& line)
{
    line.demand(QStringLiteral("silent"));
    StaySilent stay{};
    if (line.take(u"for"))
        stay.duration = line.seconds();
    return stay;
}

Repeat parseRepeat(Line& line)
{
    Repeat repeat{};
    if (!line.take(u"forever"))
        repeat.times =
            static_cast<int>(line.number(QStringLiteral("\"forever\" or how often"), 1, mostRounds, true));
    return repeat;
}

What parseWhat(Line& line)
{
    const QString command = line.keyword();
    if (command == u"send")
        return Send{line.bytes()};
    if (command == u"cut")
        return Cut{line.atEnd() ? defaultCut : line.seconds()};
    if (command == u"spots")
        return parseSpots(line);
    if (command == u"flood")
        return parseFlood(line);
    if (command == u"wait")
        return Wait{line.seconds()};
    if (command == u"expect")
        return parseExpect(line);
    if (command == u"stay")
        return parseStaySilent(line);
    if (command == u"half-close")
        return HalfClose{};
    if (command == u"close")
        return Close{};
    if (command == u"reset")
        return Reset{};
    if (command == u"repeat")
        return parseRepeat(line);
    line.fail(QStringLiteral("unknown command \"%1\"").arg(command));
    return Close{};
}

} // namespace

ParsedStatement parseStatement(const std::vector<Word>& words, int number)
{
    Line line{words};
    What what = parseWhat(line);
    line.finish();
    return {{number, std::move(what)}, line.error};
}

} // namespace spotwell::simulator
