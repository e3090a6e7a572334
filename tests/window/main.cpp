// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/Appearance.h"

#include <QApplication>
#include <QStyle>
#include <QThreadPool>
#include <gtest/gtest.h>

// A screen of our own that nobody sees, the smallest the window is made for.
int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" SCREEN_FILE);
    testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    // Painting uses the pool; between two of its threads ThreadSanitizer would see races that are none.
    QThreadPool::globalInstance()->setMaxThreadCount(1);
    QApplication::setStyle(spotwell::makeStyle().release());
    return RUN_ALL_TESTS();
}
