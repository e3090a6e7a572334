// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>

#include <functional>

namespace spotwell
{

/// Turns the toolkit's request to quit into a call: the quit command, the last window's end, and the end of
/// the desktop session. By itself the toolkit would ask each window first, and a window could refuse.
class QuitEvents final : public QObject
{
public:
    /// From now on; needs a QCoreApplication that lives longer. Main thread.
    explicit QuitEvents(std::function<void()> requested);

    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    std::function<void()> requested_;
};

} // namespace spotwell
