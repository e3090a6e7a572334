// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

#include <ostream>

// How GoogleTest shows Qt's bytes, line ends and all.
inline void PrintTo(const QByteArray& bytes, std::ostream* stream)
{
    *stream << '"' << QByteArray(bytes).replace("\r", "\\r").replace("\n", "\\n").toStdString() << '"';
}
