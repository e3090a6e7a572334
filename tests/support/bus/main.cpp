// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <csignal>

int main(int argc, char** argv)
{
    (void)std::signal(SIGPIPE, SIG_IGN); // as the program does
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
