// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/ScriptText.h"

#include <QStringList>

#include <algorithm>
#include <optional>

namespace spotwell
{

namespace
{

constexpr qsizetype maxMemberNameLength = 255;

bool isBlank(QChar character)
{
    return character == u' ' || character == u'\t';
}

QStringView withoutBlanks(QStringView text)
{
    while (!text.isEmpty() && isBlank(text.front()))
        text = text.sliced(1);
    while (!text.isEmpty() && isBlank(text.back()))
        text.chop(1);
    return text;
}

/// Takes the word at the front of `line`, and the blanks behind it.
QStringView takeWord(QStringView& line)
{
    const auto* const end =
        std::find_if(line.begin(), line.end(), [](QChar c) { return isBlank(c) || c == u'"'; });
    const QStringView word = line.first(end - line.begin());
    line = withoutBlanks(line.sliced(word.size()));
    return word;
}

bool takeKeyword(QStringView& line, QStringView keyword)
{
    return takeWord(line).compare(keyword, Qt::CaseInsensitive) == 0;
}

/// The text between the double quotes that `line` begins and ends with.
std::optional<QString> quotedText(QStringView line)
{
    if (line.size() < 2 || line.front() != u'"' || line.back() != u'"')
        return std::nullopt;
    const QStringView text = line.sliced(1, line.size() - 2);
    if (text.contains(u'"') || text.contains(u'\\'))
        return std::nullopt;
    return text.toString();
}

/// D-Bus specification, "Member names".
bool isMemberName(QStringView name)
{
    const auto isLetter = [](QChar c) {
        return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_';
    };
    const auto isDigit = [](QChar c) { return c >= u'0' && c <= u'9'; };
    return !name.isEmpty() && name.size() <= maxMemberNameLength && !isDigit(name.front()) &&
           std::all_of(name.begin(), name.end(), [&](QChar c) { return isLetter(c) || isDigit(c); });
}

} // namespace

std::variant<ScriptText, ScriptTextError> readScriptText(const QString& source)
{
    const QList<QStringView> lines = QStringView(source).split(u'\n');
    const auto line = [&lines](qsizetype index) {
        return index < lines.size() ? withoutBlanks(lines[index]) : QStringView{};
    };

    QStringView first = line(0);
    const bool tells = takeKeyword(first, u"tell") && takeKeyword(first, u"application");
    const auto application = quotedText(first);
    if (!tells || !application || application->isEmpty())
        return ScriptTextError{QStringLiteral("Expected “tell application \"NAME\"”.")};

    QStringView second = line(1);
    const QString command = takeWord(second).toString();
    const auto text = quotedText(second);
    if (!isMemberName(command) || !text)
        return ScriptTextError{QStringLiteral("Expected a command and one text in double quotes.")};

    QStringView third = line(2);
    if (!takeKeyword(third, u"end") || !takeKeyword(third, u"tell") || !third.isEmpty())
        return ScriptTextError{QStringLiteral("Expected “end tell”.")};
    for (qsizetype index = 3; index < lines.size(); ++index) {
        if (!line(index).isEmpty())
            return ScriptTextError{QStringLiteral("Expected the end of the script after “end tell”.")};
    }
    return ScriptText{*application, command, *text};
}

} // namespace spotwell
