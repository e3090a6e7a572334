// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QPlainTextEdit>
#include <QString>
#include <QStringList>
#include <QTimer>

namespace spotwell
{

/// Leaves a picture of the program's window in a file: of the first moment at which the console shows lines
/// of every source, or of the end. Main thread.
class Picture
{
public:
    /// `console` outlives it; its window is what is taken. `sources` are the words that lines begin with. An
    /// empty `file` is for no picture.
    Picture(const QPlainTextEdit& console, QStringList sources, QString file);

    void startWatching();
    /// Takes the picture now unless it was taken before.
    void takeAtLatestNow();

private:
    [[nodiscard]] bool showsAll() const;

    const QPlainTextEdit& console_;
    const QStringList sources_;
    const QString file_;
    QTimer timer_;
    bool taken_ = false;
};

/// Whether `lines`, separated by U+2029 as a text widget does, hold one of each source.
bool holdsEach(const QString& lines, const QStringList& sources);

} // namespace spotwell
