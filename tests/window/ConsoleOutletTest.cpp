// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/fakes/FakeTime.h"
#include "tests/support/WaitUntil.h"
#include "util/ConsoleView.h"

#include <QPlainTextEdit>
#include <QScrollBar>
#include <gtest/gtest.h>

namespace spotwell
{
namespace
{

/// A view that is written to, and the console whose length decides whether it scrolls.
struct ConsoleOutletTest : testing::Test {
    void SetUp() override
    {
        widget.resize(400, 200);
        widget.show();
        ASSERT_TRUE(waitUntil([this] { return widget.isVisible() && widget.viewport()->height() > 100; }));
        for (int i = 0; i < 100; ++i)
            append();
        ASSERT_GT(widget.verticalScrollBar()->maximum(), 0);
    }
    void append()
    {
        view.appendText(QStringLiteral("line"), outlet);
        view.flush();
    }
    [[nodiscard]] bool isAtTop() const { return widget.verticalScrollBar()->value() == 0; }
    [[nodiscard]] bool isAtBottom() const
    {
        return widget.verticalScrollBar()->value() == widget.verticalScrollBar()->maximum();
    }

    FakeClock clock;
    FakeMainQueue queue{clock};
    QPlainTextEdit widget;
    QPlainTextEdit outletWidget;
    ConsoleView view{widget, queue};
    ConsoleView outlet{outletWidget, queue};
};

TEST_F(ConsoleOutletTest, AnEmptyOutletLetsNoViewScroll)
{
    EXPECT_TRUE(isAtTop());
    EXPECT_EQ(outlet.text(), QString());
}

TEST_F(ConsoleOutletTest, OneCharacterOfTheOutletIsNotEnough)
{
    outlet.appendText(QStringLiteral("a"));
    outlet.removeStartLinesUntil(1);
    ASSERT_EQ(outlet.text(), QStringLiteral("a"));
    append();
    EXPECT_TRUE(isAtTop());
}

TEST_F(ConsoleOutletTest, TwoCharactersOfTheOutletAre)
{
    outlet.appendText(QStringLiteral("a"));
    ASSERT_EQ(outlet.text().size(), 2);
    append();
    EXPECT_TRUE(isAtBottom());
}

TEST_F(ConsoleOutletTest, WhatIsAppendedGoesToTheViewAlone)
{
    EXPECT_EQ(view.text(), QStringLiteral("\nline").repeated(100));
    EXPECT_EQ(outlet.text(), QString());
}

} // namespace
} // namespace spotwell
