// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>

namespace spotwell
{

/// What the desktop says of contrast.
class DesktopContrast
{
public:
    virtual ~DesktopContrast() = default;
    /// Asks whether high contrast is wanted and does not wait: `answer` runs on the main thread, unless
    /// nobody answers. While a question is under way another one is left out. Main thread.
    virtual void ask(std::function<void(bool high)> answer) = 0;
};

} // namespace spotwell
