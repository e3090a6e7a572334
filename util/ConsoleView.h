// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Queues.h"
#include "util/ConsoleText.h"

#include <QFont>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

class QPlainTextEdit;

namespace spotwell
{

class PaintedLines;

/// The console's font: "Courier" at 13 points or, where there is none, a monospaced one of that size.
[[nodiscard]] QFont consoleFont();

/// The console: shows a ConsoleText in a text widget, at the widget's end. Main thread only.
///
/// Painting a line costs a hundred times what storing it does, so entries that come within one frame are laid
/// out, trimmed and painted together; after a quiet frame the next entry is shown with the main queue's next
/// turn. The user's selection stays on the text it was made on.
class ConsoleView
{
public:
    /// A clock that never goes back.
    using SteadyNow = std::function<std::chrono::steady_clock::time_point()>;

    /// The least time between two changes of the widget.
    static constexpr Seconds frame{0.060};
    /// A line longer than this is shown cut, with an ellipsis; laying out a line takes time with its length.
    static constexpr qsizetype longestShownLine = 32768;

    /// Makes `widget` a read-only console. `widget` and `mainQueue` must outlive the view.
    ConsoleView(QPlainTextEdit& widget, MainQueue& mainQueue,
                SteadyNow now = &std::chrono::steady_clock::now);

    /// Adds an entry and brings the end into view; an empty text changes nothing.
    void appendText(const QString& text) { appendText(text, *this); }
    /// Likewise, but it is `outlet`, the console, whose length decides whether there is an end to bring into
    /// view.
    void appendText(const QString& text, const ConsoleView& outlet);

    /// Cuts whole lines from the start until at most `maximum` characters are left; the count removed.
    int removeStartLinesUntil(int maximum);

    /// Everything appended and not yet cut, whether the widget shows it already or not.
    [[nodiscard]] QString text() const { return text_.text(); }

    /// Brings the widget up to date now.
    void flush();

private:
    void setUpWidget();
    void scheduleFlush();
    void changeDocument(const ConsoleText::Change& change, PaintedLines& painted);
    void scrollToEnd();

    QPlainTextEdit& widget_;
    MainQueue& mainQueue_;
    SteadyNow now_;
    ConsoleText text_;
    // How many characters of text_ the widget stands for.
    qsizetype shown_ = 0;
    bool flushScheduled_ = false;
    bool scrollWanted_ = false;
    std::optional<std::chrono::steady_clock::time_point> lastFlush_;
    // A scheduled flush holds it weakly: no view, no flush.
    std::shared_ptr<ConsoleView*> alive_;
};

} // namespace spotwell
