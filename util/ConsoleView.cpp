// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "util/ConsoleView.h"

#include "util/PaintedLines.h"

#include <QAbstractTextDocumentLayout>
#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextLayout>
#include <QTextOption>

#include <algorithm>
#include <cmath>
#include <utility>

namespace spotwell
{

namespace
{

constexpr qreal fontSizeInPoints = 13.0;
constexpr int columnsPerTab = 8;

int endOf(const QTextDocument& document)
{
    return document.characterCount() - 1;
}

void replace(QTextDocument& document, int start, int end, const QString& text)
{
    QTextCursor edit(&document);
    // Within a block the cursor does not lay lines out to know at which x it stands.
    edit.beginEditBlock();
    edit.setPosition(start);
    edit.setPosition(end, QTextCursor::KeepAnchor);
    edit.insertText(text);
    edit.endEditBlock();
}

} // namespace

QFont consoleFont()
{
    QFont courier(QStringLiteral("Courier"));
    courier.setStyleHint(QFont::Monospace);
    courier.setPointSizeF(fontSizeInPoints);
    if (QFontInfo(courier).fixedPitch())
        return courier;
    QFont monospaced = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    monospaced.setPointSizeF(fontSizeInPoints);
    return monospaced;
}

ConsoleView::ConsoleView(QPlainTextEdit& widget, MainQueue& mainQueue, SteadyNow now)
    : widget_(widget),
      mainQueue_(mainQueue),
      now_(std::move(now)),
      alive_(std::make_shared<ConsoleView*>(this))
{
    setUpWidget();
}

void ConsoleView::setUpWidget()
{
    const QFont font = consoleFont();
    widget_.setFont(font);
    widget_.setTabStopDistance(columnsPerTab * QFontMetricsF(font).horizontalAdvance(u' '));
    widget_.setUndoRedoEnabled(false);
    widget_.setLineWrapMode(QPlainTextEdit::NoWrap);
    widget_.setCenterOnScroll(false);
    // A bar that came only when needed would come after the scrolling and cover the line scrolled to.
    widget_.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    widget_.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    // Read-only; the keyboard can select and copy as the mouse can.
    widget_.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    widget_.setTabChangesFocus(true);
    // A terminal's lines begin at the left whatever they hold and wherever the desktop reads from.
    widget_.setLayoutDirection(Qt::LeftToRight);
    QTextOption option = widget_.document()->defaultTextOption();
    option.setTextDirection(Qt::LeftToRight);
    widget_.document()->setDefaultTextOption(option);
}

void ConsoleView::appendText(const QString& text, const ConsoleView& outlet)
{
    if (text.isEmpty())
        return;
    text_.append(text);
    scrollWanted_ = scrollWanted_ || outlet.text_.length() >= ConsoleText::scrollThreshold;
    scheduleFlush();
}

int ConsoleView::removeStartLinesUntil(int maximum)
{
    const int removed = text_.removeStartLinesUntil(maximum);
    if (removed > 0)
        scheduleFlush();
    return removed;
}

void ConsoleView::scheduleFlush()
{
    if (std::exchange(flushScheduled_, true))
        return;
    auto task = [weak = std::weak_ptr(alive_)] {
        if (const auto view = weak.lock()) {
            (*view)->flushScheduled_ = false;
            (*view)->flush();
        }
    };
    const Seconds sinceLast = lastFlush_ ? Seconds(now_() - *lastFlush_) : frame;
    if (sinceLast >= frame)
        mainQueue_.async(std::move(task));
    else
        mainQueue_.after(frame - sinceLast, std::move(task));
}

void ConsoleView::flush()
{
    const ConsoleText::Change change = text_.takeChange();
    const bool scroll = std::exchange(scrollWanted_, false);
    if (change.dropped == 0 && change.appended.isEmpty())
        return;
    lastFlush_ = now_();
    PaintedLines painted(widget_);
    changeDocument(change, painted);
    if (scroll)
        scrollToEnd();
    painted.follow();
}

void ConsoleView::changeDocument(const ConsoleText::Change& change, PaintedLines& painted)
{
    QTextDocument& document = *widget_.document();
    // Only a text of one single line is ever longer than the trimming target.
    const QString appended = change.appended.size() > longestShownLine
                                 ? consoleDisplayText(change.appended.first(longestShownLine)) + u'\u2026'
                                 : consoleDisplayText(change.appended);
    const bool dropsAll = change.dropped == shown_;
    const auto dropped = static_cast<int>(change.dropped);
    shown_ = text_.length();
    if (dropsAll) {
        document.setPlainText(appended);
        painted.documentChanged(document.blockCount());
        return;
    }

    const QTextCursor user = widget_.textCursor();
    const int anchor = user.anchor();
    const int position = user.position();
    // The document would draw a selection that reaches its end out over what is added there.
    const bool selectionReachesEnd = user.hasSelection() && user.selectionEnd() == endOf(document);

    // Two edits: joined to one, they would count as a change of all lines between, to be laid out anew.
    if (dropped > 0)
        replace(document, 0, dropped, QString());
    replace(document, endOf(document), endOf(document), appended);
    painted.documentChanged(static_cast<int>(appended.count(u'\n')));

    if (selectionReachesEnd) {
        QTextCursor restored(&document);
        restored.setPosition(std::max(0, anchor - dropped));
        restored.setPosition(std::max(0, position - dropped), QTextCursor::KeepAnchor);
        widget_.setTextCursor(restored);
    }
}

void ConsoleView::scrollToEnd()
{
    const QTextBlock last = widget_.document()->lastBlock();
    // Lays the line out; the widget then knows how wide its content is.
    widget_.document()->documentLayout()->blockBoundingRect(last);
    const int endOfLine = last.length() - 1;
    const qreal x = last.layout()->lineForTextPosition(endOfLine).cursorToX(endOfLine);

    QScrollBar& horizontal = *widget_.horizontalScrollBar();
    const int margin = static_cast<int>(std::ceil(widget_.document()->documentMargin()));
    const int left = static_cast<int>(std::floor(x)) - margin;
    const int right = static_cast<int>(std::ceil(x)) + margin - widget_.viewport()->width();
    if (horizontal.value() < right)
        horizontal.setValue(right);
    else if (horizontal.value() > left)
        horizontal.setValue(left);

    widget_.verticalScrollBar()->setValue(widget_.verticalScrollBar()->maximum());
}

} // namespace spotwell
