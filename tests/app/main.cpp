// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include <QApplication>
#include <QThreadPool>
#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    // Qt paints large areas on a pool of threads, whose hand-overs ThreadSanitizer cannot see.
    QThreadPool::globalInstance()->setMaxThreadCount(1);
    return RUN_ALL_TESTS();
}
