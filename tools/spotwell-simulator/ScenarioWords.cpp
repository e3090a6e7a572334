// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/ScenarioWords.h"

#include "tools/spotwell-simulator/Charset.h"

namespace spotwell::simulator
{
namespace
{

bool isBlank(QChar character)
{
    return character == u' ' || character == u'\t';
}

bool isAsciiLetterOrDigit(QChar character)
{
    return (character >= u'a' && character <= u'z') || (character >= u'A' && character <= u'Z') ||
           (character >= u'0' && character <= u'9');
}

bool isBare(QChar character)
{
    return isAsciiLetterOrDigit(character) || character == u'.' || character == u'-' || character == u'_';
}

class Splitter
{
public:
    Splitter(const QString& line, const Variables& variables) : line_(line), variables_(variables) {}

    Words run()
    {
        while (result_.error.isNull() && nextWord()) {
        }
        return std::move(result_);
    }

private:
    [[nodiscard]] bool atEnd() const { return position_ == line_.size(); }
    [[nodiscard]] QChar peek() const { return line_[position_]; }
    void fail(const QString& error) { result_.error = error; }

    bool nextWord()
    {
        while (!atEnd() && isBlank(peek()))
            ++position_;
        if (atEnd() || peek() == u'#')
            return false;
        if (peek() == u'"')
            readText();
        else if (peek() == u'$')
            readVariable();
        else
            readBare();
        return true;
    }

    QString bareText()
    {
        const qsizetype start = position_;
        while (!atEnd() && isBare(peek()))
            ++position_;
        return line_.mid(start, position_ - start);
    }

    void readBare()
    {
        const QString text = bareText();
        if (text.isEmpty())
            fail(QStringLiteral("unexpected character \"%1\"").arg(peek()));
        else
            result_.words.push_back({Word::Kind::bare, text});
    }

    void readVariable()
    {
        ++position_;
        const QString name = bareText();
        const auto variable = variables_.constFind(name);
        if (variable == variables_.constEnd())
            fail(QStringLiteral("no variable \"%1\" was set").arg(name));
        else
            result_.words.push_back({Word::Kind::value, *variable});
    }

    void readText()
    {
        ++position_;
        QString text = QStringLiteral("");
        while (!atEnd() && peek() != u'"' && result_.error.isNull()) {
            const QChar character = peek();
            ++position_;
            text.append(character == u'\\' ? readEscape() : character);
        }
        if (!result_.error.isNull())
            return;
        if (atEnd())
            return fail(QStringLiteral("the text is not closed with a quotation mark"));
        ++position_;
        result_.words.push_back({Word::Kind::text, text});
    }

    QChar readEscape()
    {
        const QChar letter = atEnd() ? QChar{} : line_[position_++];
        switch (letter.unicode()) {
        case u'r':
            return u'\r';
        case u'n':
            return u'\n';
        case u'a':
            return u'\a';
        case u't':
            return u'\t';
        case u'0':
            return u'\0';
        case u'\\':
        case u'"':
            return letter;
        case u'x':
            return readHexadecimal();
        default:
            fail(letter.isNull() ? QStringLiteral("the text is not closed with a quotation mark")
                                 : QStringLiteral("unknown escape \"\\%1\"").arg(letter));
            return {};
        }
    }

    QChar readHexadecimal()
    {
        bool valid = false;
        const QString digits = line_.mid(position_, 2);
        const uint value =
            digits.size() == 2 && isAsciiLetterOrDigit(digits[0]) ? digits.toUInt(&valid, 16) : 0;
        if (!valid) {
            fail(QStringLiteral("\"\\x\" needs two hexadecimal digits"));
            return {};
        }
        position_ += 2;
        return value < 0x80 ? QChar{value} : QChar{rawByte(static_cast<unsigned char>(value))};
    }

    const QString& line_;
    const Variables& variables_;
    qsizetype position_ = 0;
    Words result_;
};

} // namespace

Words splitWords(const QString& line, const Variables& variables)
{
    return Splitter{line, variables}.run();
}

QString escaped(QByteArrayView bytes)
{
    QString text;
    text.reserve(bytes.size());
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        switch (byte) {
        case '\r':
            text += QStringLiteral("\\r");
            break;
        case '\n':
            text += QStringLiteral("\\n");
            break;
        case '\a':
            text += QStringLiteral("\\a");
            break;
        case '\t':
            text += QStringLiteral("\\t");
            break;
        case '\0':
            text += QStringLiteral("\\0");
            break;
        case '\\':
        case '"':
            text += u'\\';
            text += QLatin1Char{byte};
            break;
        default:
            if (value >= 0x20 && value < 0x7F)
                text += QLatin1Char{byte};
            else
                text += QStringLiteral("\\x%1").arg(value, 2, 16, QLatin1Char{'0'});
        }
    }
    return text;
}

} // namespace spotwell::simulator
