// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

class QWidget;

namespace spotwell
{

/// Asks in front of `window` whether to quit and waits for the answer; the program goes on meanwhile. True
/// when the user chose to. Main thread.
[[nodiscard]] bool asksToQuit(QWidget& window);

} // namespace spotwell
