// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <vector>

namespace spotwell::simulator
{

/// Values of a scenario's variables by name.
using Variables = QHash<QString, QString>;

/// One word of a scenario line.
struct Word {
    enum class Kind {
        bare,  ///< a keyword or a number
        text,  ///< stood in quotation marks; escapes are resolved, bytes of 0x80 and above as rawByte()
        value, ///< a variable's value: a number or a text
    };
    Kind kind = Kind::bare;
    QString text;
    bool operator==(const Word&) const = default;
};

/// A line cut into words, or what is wrong with it.
struct Words {
    std::vector<Word> words;
    /// Null when the line is well formed.
    QString error;
};

/// Cuts one line (without its line end) into words. `#` outside quotation marks begins a comment; `$name`
/// becomes the value of that variable.
Words splitWords(const QString& line, const Variables& variables);

/// `bytes` in the notation of a scenario's texts: printable ASCII as it stands, everything else as an escape.
QString escaped(QByteArrayView bytes);

} // namespace spotwell::simulator
