// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Log.h"
#include "tools/spotwell-bridge/LineWriter.h"

namespace spotwell::bridge
{

/// `text` as one line: what could end or disguise a line is shown as U+FFFD, and a text of more than 1000
/// characters is cut.
[[nodiscard]] QString oneLine(const QString& text);

/// The program's words on a descriptor, the standard error: one line each, with its name before it. Belongs
/// to the thread of its event loop.
class ErrorLog final : public Log
{
public:
    explicit ErrorLog(int descriptor);
    void line(const QString& text) override;
    /// Gives what waits for its reader a moment to leave.
    void finish();

private:
    LineWriter writer_;
};

} // namespace spotwell::bridge
