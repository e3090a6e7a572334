// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QStringList>

#include <ostream>

// How GoogleTest shows Qt's texts.
inline void PrintTo(const QString& text, std::ostream* stream)
{
    *stream << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QStringList& list, std::ostream* stream)
{
    *stream << '[';
    for (const QString& text : list)
        *stream << '"' << text.toStdString() << "\", ";
    *stream << ']';
}
