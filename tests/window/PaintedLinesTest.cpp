// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/Appearance.h"
#include "tests/fakes/FakeTime.h"
#include "tests/support/WaitUntil.h"
#include "util/ConsoleView.h"

#include <QAbstractTextDocumentLayout>
#include <QGuiApplication>
#include <QImage>
#include <QPaintEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextLayout>
#include <QVBoxLayout>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace spotwell
{
namespace
{

/// Keeps the region of each paint event.
class PaintRecord final : public QObject
{
public:
    std::vector<QRegion> regions;

    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            regions.push_back(static_cast<QPaintEvent*>(event)->region());
        return false;
    }
};

/// A window with a console and something else that can have the focus.
class PaintedLinesTest : public testing::Test
{
protected:
    void SetUp() override
    {
        auto* const layout = new QVBoxLayout(&window);
        layout->addWidget(&console);
        layout->addWidget(&button);
        window.setPalette(lightAppearnace().palette);
        window.resize(500, 300);
        window.show();
        ASSERT_TRUE(waitUntil([this] { return window.isVisible() && window.isActiveWindow(); }));
        button.setFocus();
    }
    void append(const QString& text, int times = 1)
    {
        for (; times > 0; --times)
            view.appendText(QStringLiteral("%1 %2").arg(++count, 4).arg(text));
    }
    /// As many lines as the console holds and a view's length more, so that each further one pushes one out.
    void fill()
    {
        append(QString(80, u'x'), 300);
        show();
    }
    void show()
    {
        view.flush();
        QCoreApplication::processEvents();
    }
    [[nodiscard]] QImage onScreen() const
    {
        const QRect place(console.viewport()->mapTo(&window, QPoint()), console.viewport()->size());
        return window.screen()->grabWindow(window.winId()).toImage().copy(place);
    }
    /// What is on the screen is what painting all of it gives.
    void expectTruth(const std::string& after)
    {
        const QImage screen = onScreen().convertToFormat(QImage::Format_RGB32);
        const QImage truth = console.viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
        ASSERT_EQ(screen.size(), truth.size());
        if (screen == truth)
            return;
        int row = 0;
        while (screen.copy(0, row, screen.width(), 1) == truth.copy(0, row, truth.width(), 1))
            ++row;
        FAIL() << "after " << after << ": row " << row << " of " << screen.height();
    }
    void select(int anchor, int position)
    {
        QTextCursor cursor(console.document());
        cursor.setPosition(anchor);
        cursor.setPosition(position, QTextCursor::KeepAnchor);
        console.setTextCursor(cursor);
    }
    [[nodiscard]] int end() const { return console.document()->characterCount() - 1; }
    [[nodiscard]] int lineHeight() const
    {
        const QTextBlock block = console.document()->findBlockByNumber(console.verticalScrollBar()->value());
        return qRound(console.document()->documentLayout()->blockBoundingRect(block).height());
    }

    FakeClock clock;
    FakeMainQueue queue{clock};
    QWidget window;
    QPlainTextEdit console;
    QPushButton button;
    ConsoleView view{console, queue};
    int count = 0;
};

TEST_F(PaintedLinesTest, ALineThatPushesOneOutIsPaintedAlone)
{
    fill();
    PaintRecord record;
    console.viewport()->installEventFilter(&record);
    for (const int lines : {1, 3}) {
        record.regions.clear();
        append(QString(80, u'y'), lines);
        show();
        ASSERT_EQ(record.regions.size(), 1U);
        const QRect painted = record.regions.front().boundingRect();
        // Below the last line there is less than a line's height.
        EXPECT_GE(painted.height(), lines * lineHeight());
        EXPECT_LT(painted.height(), (lines + 1) * lineHeight());
        EXPECT_EQ(painted.bottom(), console.viewport()->height() - 1);
        expectTruth(std::to_string(lines));
    }
}

TEST_F(PaintedLinesTest, ALineOfAConsoleThatIsNotFullIsPaintedAlone)
{
    append(QString(80, u'x'), 30);
    show();
    ASSERT_GT(console.verticalScrollBar()->maximum(), 0);
    PaintRecord record;
    console.viewport()->installEventFilter(&record);
    append(QStringLiteral("y"));
    // The end of so short a line would be scrolled to.
    console.horizontalScrollBar()->setValue(0);
    show();
    ASSERT_EQ(record.regions.size(), 1U);
    EXPECT_EQ(console.verticalScrollBar()->value(), console.verticalScrollBar()->maximum());
    expectTruth("one line");
}

TEST_F(PaintedLinesTest, LinesThatBecomeMoreThanTheViewHoldsAreFollowed)
{
    // Below the margin that only the first line has above it, and in views of any height.
    for (int more = 0; more < lineHeight(); more += 4) {
        view.removeStartLinesUntil(0);
        window.resize(500, 300 + more);
        show();
        for (int line = 1; line <= 40; ++line) {
            append(QString(80, u'x'));
            show();
            expectTruth(std::to_string(line) + " lines in " + std::to_string(more) + " more pixels");
            if (HasFatalFailure())
                return;
        }
    }
}

TEST_F(PaintedLinesTest, NothingBesideTheConsoleIsPainted)
{
    fill();
    PaintRecord record;
    window.installEventFilter(&record);
    for (QWidget* const other : window.findChildren<QWidget*>()) {
        if (other != console.viewport())
            other->installEventFilter(&record);
    }
    append(QString(80, u'y'), 12);
    show();
    EXPECT_TRUE(record.regions.empty());
}

TEST_F(PaintedLinesTest, WhatIsInViewIsNotLaidOutAgain)
{
    fill();
    append(QString(80, u'y'), 2);
    show();
    const QTextBlock kept = console.document()->lastBlock().previous();
    append(QString(80, u'y'), 3);
    view.flush();
    int laidOut = 0;
    for (QTextBlock block = kept; block.isValid(); block = block.next())
        laidOut += block.layout()->lineCount() == 1 ? 1 : 0;
    EXPECT_EQ(laidOut, 5);
    EXPECT_TRUE(kept.layout()->cacheEnabled());
}

TEST_F(PaintedLinesTest, WhatIsOutOfViewKeepsNoGlyphs)
{
    // First without anything pushed out, then with a line for each new one.
    for (const int lines : {60, 300}) {
        for (int i = 0; i < 20; ++i) {
            append(QString(80, u'x'), lines / 20);
            show();
        }
        append(QString(80, u'x'), 2);
        show();
        ASSERT_GT(console.verticalScrollBar()->value(), 10);
        for (int number = 0; number < console.verticalScrollBar()->value(); ++number)
            EXPECT_EQ(console.document()->findBlockByNumber(number).layout()->lineCount(), 0) << number;
    }
    // There for whoever scrolls back.
    console.verticalScrollBar()->setValue(0);
    QCoreApplication::processEvents();
    expectTruth("scrolling back");
}

TEST_F(PaintedLinesTest, TheCaretLeavesNothingBehind)
{
    fill();
    console.setFocus();
    for (const auto place :
         {QTextCursor::End, QTextCursor::Left, QTextCursor::StartOfBlock, QTextCursor::Up}) {
        console.moveCursor(place);
        append(QString(80, u'y'));
        show();
        expectTruth(std::to_string(place));
        append(QString(80, u'y'), 2);
        show();
        expectTruth(std::to_string(place) + " again");
    }
    console.moveCursor(QTextCursor::End);
    QCoreApplication::processEvents();
    button.setFocus();
    append(QString(80, u'y'));
    show();
    expectTruth("the focus went");
}

TEST_F(PaintedLinesTest, ASelectionMovesWithItsText)
{
    fill();
    const std::pair<int, int> selections[] = {
        {0, end()}, {end(), 0}, {end() - 100, end()}, {end(), end() - 1}, {end() - 300, end() - 200},
        {0, 90}};
    for (const auto& [anchor, position] : selections) {
        select(anchor, position);
        QCoreApplication::processEvents();
        for (const int lines : {1, 2, 40}) {
            append(QStringLiteral("y"), lines);
            show();
            expectTruth(std::to_string(anchor) + " to " + std::to_string(position));
        }
        fill();
    }
}

TEST_F(PaintedLinesTest, TheUsersScrollingIsFollowed)
{
    fill();
    for (const int line : {0, 1, console.verticalScrollBar()->maximum() - 1}) {
        console.verticalScrollBar()->setValue(line);
        append(QStringLiteral("y"));
        show();
        EXPECT_EQ(console.verticalScrollBar()->value(), console.verticalScrollBar()->maximum());
        expectTruth(std::to_string(line));
    }
}

TEST_F(PaintedLinesTest, WhatWaitsToBePaintedMovesToo)
{
    fill();
    append(QStringLiteral("first"));
    view.flush();
    append(QStringLiteral("second"), 2);
    view.flush();
    console.horizontalScrollBar()->setValue(3);
    append(QString(90, u'z'));
    show();
    expectTruth("three flushes");
}

TEST_F(PaintedLinesTest, ACutWithoutNewLinesIsPainted)
{
    // Glyphs as high as their lines: nothing of a line that was cut goes unnoticed.
    append(QString(80, QChar(0x2588)), 300);
    show();
    for (const int left : {10000, 2000, 500, 90, 0}) {
        view.removeStartLinesUntil(left);
        show();
        expectTruth(std::to_string(left));
    }
}

TEST_F(PaintedLinesTest, WhateverHappensTheScreenShowsTheTruth)
{
    std::mt19937 random(20);
    const auto below = [&random](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    const QString texts[] = {
        QString(80, u'x'),
        QStringLiteral("teln DX de N0CALL:    14074.0  X1X          \u2588\u2588\u2588 1428Z"),
        QStringLiteral("\u6771\u4EAC \u30B9\u30DD\u30C3\u30C8"),
        QStringLiteral("\U0001F4FB\U0001F44D\U0001F3FD emoji"),
        QStringLiteral("\u05D0\u05D1\u05D2 73 \u0645\u0631\u062D\u0628\u0627"),
        QStringLiteral("a\u0301\u0323\u0302 Z\u0351\u036B\u0343\u036A\u0302"),
        QStringLiteral("\ttab\ttab"),
        QString(300, u'W'),
        QString(5000, u'v'),
        QStringLiteral("two\nlines")};
    int full = 0;
    PaintRecord record;
    console.viewport()->installEventFilter(&record);
    for (int step = 0; step < 200; ++step) {
        const int what = below(40);
        std::string did = std::to_string(step) + ": ";
        if (what == 0) {
            window.resize(200 + below(500), 150 + below(300));
            did += "resized";
        } else if (what == 1) {
            window.setPalette(desiredAppearanceObject(below(2) == 1).palette);
            did += "appearance";
        } else if (what == 2) {
            select(below(end() + 1), below(2) == 0 ? end() : below(end() + 1));
            did += "selected";
        } else if (what == 3) {
            console.moveCursor(below(2) == 0 ? QTextCursor::End : QTextCursor::Up);
            did += "caret";
        } else if (what == 4) {
            (below(2) == 0 ? static_cast<QWidget*>(&console) : &button)->setFocus();
            did += "focus";
        } else if (what == 5) {
            console.verticalScrollBar()->setValue(below(console.verticalScrollBar()->maximum() + 1));
            did += "scrolled";
        } else if (what == 6) {
            console.horizontalScrollBar()->setValue(below(console.horizontalScrollBar()->maximum() + 1));
            did += "scrolled sideways";
        } else if (what == 7) {
            view.removeStartLinesUntil(below(20000));
            did += "cut";
        }
        if (below(3) != 0)
            QCoreApplication::processEvents();
        for (int lines = below(3) == 0 ? below(60) : below(4); lines > 0; --lines)
            append(texts[below(3) == 0 ? below(static_cast<int>(std::size(texts))) : 0]);
        record.regions.clear();
        show();
        const auto isFull = [this](const QRegion& region) { return region == console.viewport()->rect(); };
        full += std::any_of(record.regions.begin(), record.regions.end(), isFull) ? 1 : 0;
        expectTruth(did);
        if (HasFatalFailure())
            return;
    }
    // Else it would be no wonder.
    EXPECT_LT(full, 125);
}

} // namespace
} // namespace spotwell
