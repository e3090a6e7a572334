// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/integration/support/ProgramFixture.h"
#include "tests/integration/support/WindowPing.h"

#include <memory>

namespace spotwell
{

/// The shipped program with a node, a logger, and files that are not as they should be. Whatever they are
/// like, it logs in, a spot line arrives, the window answers, and it ends in order.
class FileFaultFixture : public ProgramFixture
{
protected:
    /// Starts it, by a command that becomes it; the window answers when this returns.
    void launch(const QStringList& command = {}, const QStringList& variables = {});
    /// Logs in to the node, which the settings have led it to.
    void expectLogin();
    /// The node says a spot line, the logger gets it and the window answers.
    void expectTheNodeGoesOn();
    /// The window is there and answers.
    void expectTheWindowAnswers() { EXPECT_TRUE(ping.answers()) << "the window hangs"; }
    /// Settings of all keys, for the node, so that what is saved at the end is known.
    [[nodiscard]] SettingsTexts fullSettings() const;
    void put(const QString& path, const QByteArray& content) const;
    [[nodiscard]] static unsigned modeOf(const QString& path);
    /// What becomes the command behind it, without what lets the superuser write where he may not.
    [[nodiscard]] static QStringList withoutPrivileges();

    WindowPing ping;
    std::unique_ptr<BusPeer> logger = makeLogger(QStringLiteral("6.50"));

private:
    int lines_ = 0;
};

} // namespace spotwell
