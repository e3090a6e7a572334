// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/WindowColours.h"

#include <QApplication>

namespace spotwell
{

void WindowColours::begin()
{
    ofColours_ = contrastOf(QApplication::palette());
}

void WindowColours::show(bool dark)
{
    dark_ = dark;
    const bool high = ofColours_ == Contrast::high || asked_ == Contrast::high;
    window_.setAppearance(desiredAppearanceObject(dark, high ? Contrast::high : Contrast::normal));
}

void WindowColours::follow()
{
    QObject::connect(qApp, &QGuiApplication::applicationStateChanged, &window_,
                     [this](Qt::ApplicationState state) {
                         if (state == Qt::ApplicationActive)
                             ask();
                     });
    ask();
}

void WindowColours::ask()
{
    desktop_.ask([this](bool high) {
        const Contrast told = high ? Contrast::high : Contrast::normal;
        if (told == asked_)
            return;
        asked_ = told;
        show(dark_);
    });
}

} // namespace spotwell
