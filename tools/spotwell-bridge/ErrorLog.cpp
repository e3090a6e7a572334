// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/ErrorLog.h"

namespace spotwell::bridge
{

namespace
{

using namespace std::chrono_literals;

constexpr qsizetype longestText = 1000;
constexpr auto finishing = 100ms;

/// Control and format characters; among the latter are those that reorder a line.
bool isUnsafe(QChar character)
{
    switch (character.category()) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

} // namespace

QString oneLine(const QString& text)
{
    QString line = text.left(longestText);
    for (QChar& character : line) {
        if (isUnsafe(character))
            character = QChar::ReplacementCharacter;
    }
    return line;
}

// Nobody can be told of trouble with what tells of trouble.
ErrorLog::ErrorLog(int descriptor) : writer_(descriptor, {[] {}, [](std::size_t) {}, [](int) {}}) {}

void ErrorLog::line(const QString& text)
{
    writer_.write("spotwell-bridge: " + oneLine(text).toUtf8());
}

void ErrorLog::finish()
{
    writer_.finish(finishing, finishing);
}

} // namespace spotwell::bridge
