// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "util/ConsoleView.h"

#include "tests/fakes/FakeTime.h"
#include "tests/support/WaitUntil.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextLayout>
#include <QTextOption>
#include <gtest/gtest.h>

#include <random>

namespace spotwell
{
namespace
{

QString lineNumber(int n)
{
    return QStringLiteral("teln DX de N0CALL:    14074.0  X1X          line %1").arg(n, 6, 10, QChar(u'0'));
}

class ConsoleViewTest : public testing::Test
{
protected:
    /// The widget's text, line feeds for ends of lines and nothing else changed.
    [[nodiscard]] QString shown() const
    {
        return widget.document()->toRawText().replace(QChar::ParagraphSeparator, u'\n');
    }
    void showWidget()
    {
        widget.resize(400, 200);
        widget.show();
        ASSERT_TRUE(waitUntil([this] { return widget.isVisible() && widget.viewport()->height() > 100; }));
    }
    void appendNow(const QString& text)
    {
        view->appendText(text);
        view->flush();
    }
    void appendLines(int count)
    {
        for (int i = 0; i < count; ++i)
            view->appendText(lineNumber(i));
        view->flush();
    }
    [[nodiscard]] bool isAtBottom() const
    {
        return widget.verticalScrollBar()->value() == widget.verticalScrollBar()->maximum();
    }
    /// Where the end of the last line stands in the viewport.
    [[nodiscard]] QRect endOfText() const
    {
        QTextCursor end(widget.document());
        end.movePosition(QTextCursor::End);
        return widget.cursorRect(end);
    }
    void select(int anchor, int position)
    {
        QTextCursor cursor = widget.textCursor();
        cursor.setPosition(anchor);
        cursor.setPosition(position, QTextCursor::KeepAnchor);
        widget.setTextCursor(cursor);
    }

    FakeClock clock;
    FakeMainQueue queue{clock};
    QPlainTextEdit widget;
    std::unique_ptr<ConsoleView> view = std::make_unique<ConsoleView>(widget, queue, [this] {
        return std::chrono::steady_clock::time_point(
            std::chrono::duration_cast<std::chrono::steady_clock::duration>(clock.time.time_since_epoch()));
    });
};

TEST_F(ConsoleViewTest, AFirstEntryIsShownWithTheQueuesNextTurn)
{
    view->appendText(QStringLiteral("a"));
    EXPECT_EQ(view->text(), QStringLiteral("\na"));
    EXPECT_EQ(shown(), QString());
    EXPECT_EQ(queue.pendingCount(), 1U);
    EXPECT_EQ(queue.timerCount(), 0U);
    queue.runPending();
    EXPECT_EQ(shown(), QStringLiteral("\na"));
}

TEST_F(ConsoleViewTest, AnEmptyEntryDoesNothing)
{
    view->appendText(QString());
    EXPECT_EQ(queue.pendingCount() + queue.timerCount(), 0U);
    EXPECT_EQ(view->text(), QString());
}

TEST_F(ConsoleViewTest, EntriesOfOneFrameAreShownTogether)
{
    view->appendText(QStringLiteral("a"));
    queue.runPending();
    clock.advance(Seconds(0.010));
    int changes = 0;
    QObject::connect(widget.document(), &QTextDocument::contentsChange, &widget, [&] { ++changes; });
    view->appendText(QStringLiteral("b"));
    view->appendText(QStringLiteral("c"));
    EXPECT_EQ(queue.pendingCount(), 0U);
    EXPECT_EQ(queue.timerCount(), 1U);
    queue.advance(Seconds(0.049));
    EXPECT_EQ(shown(), QStringLiteral("\na"));
    EXPECT_EQ(view->text(), QStringLiteral("\na\nb\nc"));
    queue.advance(Seconds(0.001));
    EXPECT_EQ(shown(), QStringLiteral("\na\nb\nc"));
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(queue.timerCount(), 0U);
}

TEST_F(ConsoleViewTest, AfterAQuietFrameTheNextEntryIsShownAtOnce)
{
    for (const double quiet : {0.060, 5.0}) {
        view->appendText(QStringLiteral("a"));
        queue.runPending();
        clock.advance(Seconds(quiet));
        view->appendText(QStringLiteral("b"));
        EXPECT_EQ(queue.pendingCount(), 1U) << quiet;
        EXPECT_EQ(queue.timerCount(), 0U) << quiet;
        queue.runPending();
        clock.advance(Seconds(0.060));
    }
    EXPECT_EQ(shown(), QStringLiteral("\na\nb\na\nb"));
}

TEST_F(ConsoleViewTest, AFlushByHandLeavesNothingForTheScheduledOne)
{
    appendNow(QStringLiteral("a"));
    EXPECT_EQ(shown(), QStringLiteral("\na"));
    int changes = 0;
    QObject::connect(widget.document(), &QTextDocument::contentsChange, &widget, [&] { ++changes; });
    queue.runPending();
    EXPECT_EQ(changes, 0);
    view->appendText(QStringLiteral("b"));
    queue.advance(Seconds(0.060));
    EXPECT_EQ(shown(), QStringLiteral("\na\nb"));
}

TEST_F(ConsoleViewTest, AViewThatIsGoneLeavesTheWidgetAlone)
{
    view->appendText(QStringLiteral("a"));
    view.reset();
    queue.runPending();
    EXPECT_EQ(shown(), QString());
}

TEST_F(ConsoleViewTest, NothingOfTrimmingCanBeUndone)
{
    appendLines(1000);
    appendLines(50);
    EXPECT_EQ(shown(), view->text());
    EXPECT_FALSE(widget.document()->isUndoAvailable());
}

TEST_F(ConsoleViewTest, ShowsTheTextWhateverComes)
{
    std::mt19937 random(73);
    const QString odd = QString(QChar(0)) +
                        QStringLiteral("\r\t\n\u00A0\u0085\u2028\u2029\u202E\u2066\uFDD0\uFDD1\uFFFC") +
                        QChar(0xD800) + QStringLiteral("\U0001F4FB\u05D0\u0301") + QChar(0xDC00);
    for (int i = 0; i < 400; ++i) {
        const auto kind = random() % 40;
        QString entry(static_cast<int>(random() % 300), u'x');
        if (kind == 0)
            entry = QString(static_cast<int>(random() % 30000), u'y');
        else if (kind < 12)
            entry.insert(static_cast<int>(random() % static_cast<unsigned>(entry.size() + 1)), odd);
        view->appendText(entry);
        if (random() % 50 == 0)
            view->removeStartLinesUntil(static_cast<int>(random() % 5000));
        if (random() % 5 == 0) {
            view->flush();
            ASSERT_EQ(shown(), consoleDisplayText(view->text())) << "entry " << i;
        }
    }
}

TEST_F(ConsoleViewTest, RemoveStartLinesUntilReachesTheWidget)
{
    appendNow(QStringLiteral("one"));
    appendNow(QStringLiteral("two"));
    queue.advance(Seconds(1.0));
    EXPECT_EQ(view->removeStartLinesUntil(8), 0);
    EXPECT_EQ(view->removeStartLinesUntil(5), 5);
    EXPECT_EQ(view->text(), QStringLiteral("two"));
    queue.runPending();
    EXPECT_EQ(shown(), QStringLiteral("two"));
}

TEST_F(ConsoleViewTest, ALineOf16KCharactersIsShownWhole)
{
    const QString line(16384, u'x');
    appendNow(line);
    EXPECT_EQ(shown(), u'\n' + line);
}

TEST_F(ConsoleViewTest, AnEndlessLineIsShownCutUntilTheNextEntry)
{
    const auto limit = ConsoleView::longestShownLine;
    appendNow(QString(limit, u'x'));
    EXPECT_EQ(shown(), QString(limit, u'x'));
    appendNow(QString(limit + 1, u'y'));
    EXPECT_EQ(shown(), QString(limit, u'y') + u'\u2026');
    EXPECT_EQ(view->text(), QString(limit + 1, u'y'));
    appendNow(QStringLiteral("next"));
    EXPECT_EQ(shown(), QStringLiteral("next"));
}

TEST_F(ConsoleViewTest, ASelectionStaysOnItsText)
{
    appendNow(QStringLiteral("first"));
    appendNow(QStringLiteral("chosen"));
    appendNow(QStringLiteral("third"));
    select(7, 13);
    ASSERT_EQ(widget.textCursor().selectedText(), QStringLiteral("chosen"));
    appendNow(QStringLiteral("fourth"));
    EXPECT_EQ(widget.textCursor().selectedText(), QStringLiteral("chosen"));
    view->removeStartLinesUntil(21);
    appendNow(QStringLiteral("fifth"));
    ASSERT_EQ(shown(), QStringLiteral("chosen\nthird\nfourth\nfifth"));
    EXPECT_EQ(widget.textCursor().selectedText(), QStringLiteral("chosen"));
    EXPECT_EQ(widget.textCursor().anchor(), 0);
}

TEST_F(ConsoleViewTest, ASelectionThatReachesTheEndDoesNotGrow)
{
    for (const bool backwards : {false, true}) {
        appendNow(QStringLiteral("chosen"));
        const int end = widget.document()->characterCount() - 1;
        select(backwards ? end : end - 6, backwards ? end - 6 : end);
        view->removeStartLinesUntil(static_cast<int>(view->text().size()) - 1);
        appendNow(QStringLiteral("more"));
        EXPECT_EQ(widget.textCursor().selectedText(), QStringLiteral("chosen"));
        EXPECT_EQ(widget.textCursor().anchor() > widget.textCursor().position(), backwards);
    }
}

TEST_F(ConsoleViewTest, ACaretAtTheEndStaysAtTheEnd)
{
    appendNow(QStringLiteral("first"));
    widget.moveCursor(QTextCursor::End);
    appendNow(QStringLiteral("second"));
    EXPECT_TRUE(widget.textCursor().atEnd());
    widget.moveCursor(QTextCursor::Start);
    appendNow(QStringLiteral("third"));
    EXPECT_TRUE(widget.textCursor().atStart());
}

TEST_F(ConsoleViewTest, ASelectionGoesWithTheTextItWasMadeOn)
{
    appendNow(QStringLiteral("first"));
    appendNow(QStringLiteral("second"));
    select(1, 9);
    view->removeStartLinesUntil(6);
    view->flush();
    ASSERT_EQ(shown(), QStringLiteral("second"));
    EXPECT_EQ(widget.textCursor().selectedText(), QStringLiteral("se"));
    appendNow(QString(25000, u'x'));
    EXPECT_FALSE(widget.textCursor().hasSelection());
}

TEST_F(ConsoleViewTest, AnEntryBringsTheEndIntoView)
{
    showWidget();
    appendLines(300);
    EXPECT_GT(widget.verticalScrollBar()->maximum(), 0);
    EXPECT_TRUE(isAtBottom());
    widget.verticalScrollBar()->setValue(0);
    appendNow(QStringLiteral("x"));
    EXPECT_TRUE(isAtBottom());
    EXPECT_TRUE(widget.viewport()->rect().contains(endOfText()));
}

TEST_F(ConsoleViewTest, TheEndStaysInViewWhenTheWindowSystemHasHadItsTurn)
{
    showWidget();
    appendLines(300);
    appendNow(QString(500, u'x'));
    QCoreApplication::processEvents();
    EXPECT_TRUE(isAtBottom());
    EXPECT_TRUE(widget.viewport()->rect().contains(endOfText()));
}

TEST_F(ConsoleViewTest, TheSelectionDoesNotKeepTheEndOutOfView)
{
    showWidget();
    appendLines(300);
    select(widget.document()->characterCount() - 1, 0);
    appendLines(3);
    EXPECT_TRUE(isAtBottom());
    EXPECT_EQ(widget.textCursor().position(), 0);
}

TEST_F(ConsoleViewTest, CuttingLinesAloneDoesNotScroll)
{
    showWidget();
    appendLines(300);
    widget.verticalScrollBar()->setValue(0);
    view->removeStartLinesUntil(10000);
    view->flush();
    EXPECT_FALSE(isAtBottom());
}

TEST_F(ConsoleViewTest, ScrollsSidewaysNoFurtherThanItMust)
{
    showWidget();
    QScrollBar& bar = *widget.horizontalScrollBar();
    const int width = widget.viewport()->width();
    appendNow(QStringLiteral("short"));
    EXPECT_EQ(bar.value(), 0);

    // To the right just until the end of the line is there.
    appendNow(QString(200, u'x'));
    EXPECT_GT(bar.value(), 0);
    EXPECT_TRUE(widget.viewport()->rect().contains(endOfText()));
    EXPECT_GT(endOfText().left(), width - 10);
    EXPECT_TRUE(isAtBottom());

    // Not at all for an end that is in view already.
    const int scrolled = bar.value();
    appendNow(QString(195, u'x'));
    EXPECT_EQ(bar.value(), scrolled);

    // And back just until the end is there.
    appendNow(QString(100, u'x'));
    EXPECT_LT(bar.value(), scrolled);
    EXPECT_GT(bar.value(), 0);
    EXPECT_TRUE(widget.viewport()->rect().contains(endOfText()));
    EXPECT_LT(endOfText().left(), 10);
    appendNow(QStringLiteral("x"));
    EXPECT_LT(bar.value(), 20);
    EXPECT_TRUE(widget.viewport()->rect().contains(endOfText()));
}

TEST_F(ConsoleViewTest, LinesNeverWrap)
{
    showWidget();
    appendNow(QString(16384, u'x'));
    EXPECT_EQ(widget.lineWrapMode(), QPlainTextEdit::NoWrap);
    EXPECT_EQ(widget.document()->lastBlock().layout()->lineCount(), 1);
}

TEST_F(ConsoleViewTest, LinesBeginAtTheLeftWhateverTheyHold)
{
    showWidget();
    appendNow(QStringLiteral("\u05D0\u05D1\u05D2 73"));
    EXPECT_EQ(widget.document()->defaultTextOption().textDirection(), Qt::LeftToRight);
    EXPECT_EQ(widget.layoutDirection(), Qt::LeftToRight);
    const QTextLine line = widget.document()->lastBlock().layout()->lineAt(0);
    EXPECT_LT(line.naturalTextRect().left(), 10.0);
}

TEST_F(ConsoleViewTest, CanBeReadAndCopiedButNotChanged)
{
    EXPECT_TRUE(widget.isReadOnly());
    EXPECT_FALSE(widget.isUndoRedoEnabled());
    EXPECT_TRUE(widget.textInteractionFlags() & Qt::TextSelectableByMouse);
    EXPECT_TRUE(widget.textInteractionFlags() & Qt::TextSelectableByKeyboard);
    EXPECT_TRUE(widget.tabChangesFocus());
    EXPECT_EQ(widget.maximumBlockCount(), 0);
}

TEST_F(ConsoleViewTest, TextIsCourier13AndHasNoColourOfItsOwn)
{
    appendNow(QStringLiteral("a"));
    appendLines(3);
    EXPECT_DOUBLE_EQ(widget.font().pointSizeF(), 13.0);
    EXPECT_TRUE(QFontInfo(widget.font()).fixedPitch());
    if (QFontDatabase::hasFamily(QStringLiteral("Courier"))) {
        EXPECT_EQ(widget.font().family(), QStringLiteral("Courier"));
    }
    for (QTextBlock block = widget.document()->begin(); block.isValid(); block = block.next()) {
        EXPECT_FALSE(block.charFormat().hasProperty(QTextFormat::ForegroundBrush));
        for (auto fragment = block.begin(); !fragment.atEnd(); ++fragment)
            EXPECT_EQ(fragment.fragment().charFormat().propertyCount(), 0);
    }
}

TEST(ConsoleFont, IsMonospacedAt13Points)
{
    const QFont font = consoleFont();
    EXPECT_DOUBLE_EQ(font.pointSizeF(), 13.0);
    EXPECT_TRUE(QFontInfo(font).fixedPitch());
}

} // namespace
} // namespace spotwell
