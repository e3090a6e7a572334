// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// Says where a user finds the controls: a line "NAME X Y WIDTH HEIGHT" for the window itself and each control
// in it, by its object name, and for each button of the quit question in that, by its text. Made and laid out
// as the program does it, with the fonts of the same screen.

#include "app/Appearance.h"
#include "app/MainWindow.h"
#include "app/QuitQuestion.h"

#include <QAbstractButton>
#include <QApplication>
#include <QStyle>
#include <QTimer>

#include <cstdio>

namespace
{

void say(const QString& name, const QRect& place)
{
    std::printf("%s %d %d %d %d\n", qPrintable(name), place.x(), place.y(), place.width(), place.height());
}

QRect placeIn(const QWidget& window, const QWidget& control)
{
    return {control.mapTo(&window, QPoint()), control.size()};
}

} // namespace

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    QApplication::setStyle(spotwell::makeStyle().release());

    spotwell::MainWindow window;
    (void)window.grab(); // lays everything out
    say(window.objectName(), window.rect());
    for (const QWidget* control : window.centralWidget()->findChildren<QWidget*>()) {
        if (!control->objectName().isEmpty())
            say(control->objectName(), placeIn(window, *control));
    }

    QTimer::singleShot(0, [] {
        QWidget* const question = QApplication::activeModalWidget();
        for (const QAbstractButton* button : question->findChildren<QAbstractButton*>())
            say(button->text(), placeIn(*question, *button));
        question->close();
    });
    return spotwell::asksToQuit(window) ? 1 : 0;
}
