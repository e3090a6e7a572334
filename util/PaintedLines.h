// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QMetaObject>
#include <QSignalBlocker>

#include <optional>

class QPlainTextEdit;

namespace spotwell
{

/// Keeps what is painted of a console's lines while lines are cut from the document's start and added at its
/// end: the pixels move to where their lines are then, and only what is new is painted. Every block must be
/// one line. Main thread only.
///
/// Made before the document is changed; documentChanged() when it is, and, after all scrolling, follow().
class PaintedLines
{
public:
    explicit PaintedLines(QPlainTextEdit& widget);
    ~PaintedLines();
    PaintedLines(const PaintedLines&) = delete;
    PaintedLines& operator=(const PaintedLines&) = delete;

    /// Lets the widget know its document's new size. `added` is the number of lines that were added.
    void documentChanged(int added);

    /// Moves the pixels and asks for the rest to be painted.
    void follow();

private:
    struct Line {
        int top;
        int height;
    };
    [[nodiscard]] int topLine() const;
    [[nodiscard]] std::optional<Line> lineInView(int number) const;

    QPlainTextEdit& widget_;
    // Until the document is changed, its layout does not ask for everything to be painted.
    QSignalBlocker quiet_;
    // How far the widget has moved its pixels by itself, downwards.
    int moved_ = 0;
    QMetaObject::Connection movement_;
    int top_;
    // The line that was the last: its number, and where it stood in the viewport.
    int last_;
    std::optional<Line> place_;
    // Whether the caret was to be seen at its end, from where it goes to the new end.
    bool caretAtEnd_;
};

} // namespace spotwell
