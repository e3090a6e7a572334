// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/VirtualScreen.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

#include <csignal>
#include <exception>
#include <optional>
#include <sys/stat.h>

namespace
{

/// One screen for all tests of this process; the programs they start find it in DISPLAY.
class Screen final : public testing::Environment
{
public:
    void SetUp() override
    {
        try {
            screen_.emplace();
            qputenv("DISPLAY", screen_->display().toLatin1());
        } catch (const std::exception& error) {
            FAIL() << error.what();
        }
    }
    void TearDown() override { screen_.reset(); }

private:
    std::optional<spotwell::VirtualScreen> screen_;
};

} // namespace

int main(int argc, char** argv)
{
    (void)std::signal(SIGPIPE, SIG_IGN);
    // The usual one, and not the one that the program has to give itself.
    ::umask(022);
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    testing::AddGlobalTestEnvironment(new Screen);
    return RUN_ALL_TESTS();
}
