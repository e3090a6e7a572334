// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/QuitQuestion.h"

#include "tests/app/FakeProgram.h"
#include "tests/support/WaitUntil.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <gtest/gtest.h>

#include <functional>

namespace spotwell
{

namespace
{

QMessageBox* openQuestion()
{
    return qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
}

QPushButton* buttonOf(const QMessageBox& question, const QString& text)
{
    for (QPushButton* button : question.findChildren<QPushButton*>()) {
        if (button->text() == text)
            return button;
    }
    ADD_FAILURE() << "no button " << text.toStdString();
    return nullptr;
}

void press(QMessageBox& question, Qt::Key key)
{
    for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, Qt::NoModifier);
        QApplication::sendEvent(question.focusWidget() ? question.focusWidget() : &question, &event);
    }
}

struct QuitQuestionTest : testing::Test {
    QuitQuestionTest()
    {
        // Questions that nobody expects end by themselves, one after the other.
        QObject::connect(&lifeline, &QTimer::timeout, [] {
            ADD_FAILURE() << "nobody answered";
            if (QMessageBox* const question = openQuestion())
                question->reject();
        });
    }
    /// Asks, and does this as soon as the question is there.
    bool ask(const std::function<void(QMessageBox&)>& answer)
    {
        meanwhile(answer);
        return asksToQuit(window);
    }
    /// Closes the window as the desktop does; whether it has closed.
    bool close(const std::function<void(QMessageBox&)>& answer)
    {
        meanwhile(answer);
        return window.close();
    }
    void meanwhile(const std::function<void(QMessageBox&)>& answer)
    {
        lifeline.start(20'000);
        QTimer::singleShot(0, &window, [this, answer] {
            QMessageBox* const question = openQuestion();
            ASSERT_TRUE(question);
            ++asked;
            answer(*question);
            lifeline.stop();
        });
    }
    void launchAndShow()
    {
        program.launch();
        window.show();
        ASSERT_TRUE(waitUntil([this] { return window.isActiveWindow(); }));
    }

    FakeProgram program;
    MainWindow& window = program.window;
    QTimer lifeline;
    int asked = 0;
};

void clickOn(QMessageBox& question, const QString& text)
{
    if (QPushButton* const button = buttonOf(question, text))
        button->click();
    else
        question.reject();
}

void clickQuit(QMessageBox& question)
{
    clickOn(question, QStringLiteral("Quit"));
}

void clickContinue(QMessageBox& question)
{
    clickOn(question, QStringLiteral("Continue"));
}

} // namespace

TEST_F(QuitQuestionTest, IsWordedLetterByLetter)
{
    (void)ask([](QMessageBox& question) {
        EXPECT_EQ(question.text(), QStringLiteral("Do you want to quit spotwell ?"));
        EXPECT_EQ(question.informativeText(), QString());
        EXPECT_EQ(question.detailedText(), QString());
        EXPECT_EQ(question.icon(), QMessageBox::Warning);
        EXPECT_FALSE(question.iconPixmap().isNull());
        QStringList texts;
        for (const QAbstractButton* button : question.buttons())
            texts.append(button->text());
        EXPECT_EQ(texts, (QStringList{QStringLiteral("Quit"), QStringLiteral("Continue")}));
        EXPECT_EQ(question.defaultButton(), buttonOf(question, QStringLiteral("Quit")));
        EXPECT_EQ(question.focusWidget(), question.defaultButton());
        EXPECT_EQ(question.escapeButton(), buttonOf(question, QStringLiteral("Continue")));
        question.reject();
    });
}

TEST_F(QuitQuestionTest, IsModalInFrontOfItsWindow)
{
    (void)ask([this](QMessageBox& question) {
        EXPECT_EQ(question.parentWidget(), &window);
        EXPECT_TRUE(question.isModal());
        question.reject();
    });
    EXPECT_EQ(openQuestion(), nullptr);
}

TEST_F(QuitQuestionTest, OnlyQuitIsYes)
{
    EXPECT_TRUE(ask(clickQuit));
    EXPECT_FALSE(ask(clickContinue));
    EXPECT_TRUE(ask([](QMessageBox& question) { press(question, Qt::Key_Return); }));
    EXPECT_FALSE(ask([](QMessageBox& question) { press(question, Qt::Key_Escape); }));
    EXPECT_FALSE(ask([](QMessageBox& question) { question.close(); }));
    EXPECT_EQ(asked, 5);
}

TEST_F(QuitQuestionTest, QuitClosesTheWindow)
{
    launchAndShow();
    EXPECT_TRUE(close(clickQuit));
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(asked, 1);
}

TEST_F(QuitQuestionTest, ContinueKeepsTheWindowAndAllElse)
{
    launchAndShow();
    window.connected->click();
    const QStringList before = program.console();
    program.keepJournal();
    EXPECT_FALSE(close(clickContinue));
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(program.console(), before);
    EXPECT_TRUE(window.connected->isChecked());
    EXPECT_EQ(program.journal, QStringList()) << "nothing is saved, logged, sent or closed";
    EXPECT_TRUE(program.defaults.strings.empty());
    EXPECT_TRUE(program.defaults.booleans.empty());
}

TEST_F(QuitQuestionTest, ContinueBringsTheWindowBack)
{
    launchAndShow();
    QWidget other;
    EXPECT_FALSE(close([&](QMessageBox& question) {
        window.hide();
        other.show();
        other.activateWindow();
        question.reject();
    }));
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(waitUntil([this] { return window.isActiveWindow(); }));
}

TEST_F(QuitQuestionTest, ContinueBringsAMinimisedWindowBack)
{
    launchAndShow();
    window.showMinimized();
    ASSERT_TRUE(window.isMinimized());
    EXPECT_FALSE(close(clickContinue));
    EXPECT_FALSE(window.isMinimized());
    EXPECT_TRUE(window.isVisible());
}

TEST_F(QuitQuestionTest, IsAskedAgainButOnlyOnceAtATime)
{
    launchAndShow();
    const auto closeTwice = [this](QMessageBox& question) {
        QCloseEvent again;
        QApplication::sendEvent(&window, &again);
        EXPECT_FALSE(again.isAccepted());
        EXPECT_FALSE(program.delegate.applicationShouldTerminateAfterLastWindowClosed());
        EXPECT_EQ(openQuestion(), &question);
        EXPECT_EQ(window.findChildren<QMessageBox*>().size(), 1);
        question.reject();
    };
    EXPECT_FALSE(close(closeTwice));
    EXPECT_FALSE(close(clickContinue));
    EXPECT_TRUE(close(clickQuit));
    EXPECT_EQ(asked, 3);
}

TEST_F(QuitQuestionTest, TheProgramGoesOnWhileItAsks)
{
    launchAndShow();
    window.connected->click();
    EXPECT_FALSE(close([this](QMessageBox& question) {
        program.sockets.last().receive("a line\r\n");
        program.runQueues();
        EXPECT_EQ(program.console().last(), QStringLiteral("teln a line"));
        question.reject();
    }));
}

} // namespace spotwell
