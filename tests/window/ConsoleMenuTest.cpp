// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/fakes/FakeTime.h"
#include "tests/support/WaitUntil.h"
#include "util/ConsoleView.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QPlainTextEdit>
#include <QTextCursor>
#include <gtest/gtest.h>

namespace spotwell
{
namespace
{

class ConsoleMenuTest : public testing::Test
{
protected:
    void SetUp() override
    {
        widget.resize(400, 200);
        widget.show();
        ASSERT_TRUE(waitUntil([this] { return widget.isVisible() && widget.viewport()->height() > 100; }));
        view.appendText(QStringLiteral("some text"));
        view.flush();
    }

    FakeClock clock;
    FakeMainQueue queue{clock};
    QPlainTextEdit widget;
    ConsoleView view{widget, queue};
};

TEST_F(ConsoleMenuTest, TheMenuOfACaretOutOfSightIsInSight)
{
    widget.setTextCursor(QTextCursor(widget.document()));
    for (int i = 0; i < 100; ++i)
        view.appendText(QStringLiteral("more"));
    view.flush();
    const QPoint caret = widget.cursorRect().center();
    ASSERT_LT(caret.y(), 0);
    QContextMenuEvent asked(QContextMenuEvent::Keyboard, caret, widget.mapToGlobal(caret));
    QApplication::sendEvent(&widget, &asked);
    QWidget* const menu = QApplication::activePopupWidget();
    ASSERT_TRUE(menu);
    EXPECT_TRUE(QRect(widget.mapToGlobal(QPoint()), widget.size()).contains(menu->pos()));
    menu->close();
}

TEST_F(ConsoleMenuTest, TheMenuCopiesWhatIsSelectedAndSelectsAll)
{
    const auto entries = [this] {
        QContextMenuEvent asked(QContextMenuEvent::Mouse, QPoint(40, 40), widget.mapToGlobal(QPoint(40, 40)));
        QApplication::sendEvent(widget.viewport(), &asked);
        QStringList result;
        QWidget* const menu = QApplication::activePopupWidget();
        EXPECT_TRUE(menu);
        for (const QAction* action : menu ? menu->actions() : QList<QAction*>()) {
            if (!action->isSeparator())
                result.append(action->text().remove(u'&') + (action->isEnabled() ? u'+' : u'-'));
        }
        if (menu)
            menu->close();
        return result;
    };
    EXPECT_EQ(entries(),
              QStringList({QStringLiteral("Copy\tCtrl+C-"), QStringLiteral("Select All\tCtrl+A+")}));
    QTextCursor cursor = widget.textCursor();
    cursor.setPosition(3);
    cursor.setPosition(8, QTextCursor::KeepAnchor);
    widget.setTextCursor(cursor);
    EXPECT_EQ(entries(),
              QStringList({QStringLiteral("Copy\tCtrl+C+"), QStringLiteral("Select All\tCtrl+A+")}));
}

} // namespace
} // namespace spotwell
