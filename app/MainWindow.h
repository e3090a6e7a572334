// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "app/Accessibility.h"
#include "app/Appearance.h"
#include "ui_MainWindow.h"

#include <QMainWindow>
#include <QSize>

#include <functional>

namespace spotwell
{

/// The size that the window begins with: the one `wanted`, as far as it has room with its frame where so much
/// is `available`, and no larger than a small screen allows. In device-independent pixels.
[[nodiscard]] QSize firstSize(const QSize& wanted, const QSize& available);

/// The one window: fields and boxes for the feeds, the bulb, and the console below them.
///
/// It shows and asks; what a control does is its owner's business. The controls are members of
/// Ui::MainWindow.
class MainWindow : public QMainWindow, public Ui::MainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent = nullptr);

    /// Gives the window, its dialogs and the rest of the application these colours; what is on the screen
    /// follows at once.
    void setAppearance(const Appearance& appearance);

    /// Puts into words (tooltip, accessible description) what the bulb shows, and announces what is new; the
    /// image is the caller's.
    void setLogwrightRunning(bool running);

    /// Asked when the window is to be closed; it stays open on false. Empty: it closes.
    std::function<bool()> shouldClose;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void describeConnection(bool connected);
    void announceConnection(bool connected);
    void describeBulb(const QString& words);
    void showContextMenu() const;
    [[nodiscard]] QSize initialSize() const;

    // One for each matter, so that neither takes the other's words away before they were read.
    Announcer connectionNews_{*this};
    Announcer logwrightNews_{*this};
};

} // namespace spotwell
