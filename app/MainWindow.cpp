// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/MainWindow.h"

#include "app/Images.h"
#include "util/ConsoleView.h"

#include <QApplication>
#include <QCloseEvent>
#include <QContextMenuEvent>
#include <QFontMetricsF>
#include <QScreen>
#include <QScrollBar>
#include <QShortcut>
#include <QTextDocument>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace spotwell
{

namespace
{

/// What a spot takes on the console: 80 columns, and behind them a park's reference.
constexpr int consoleColumns = 90;
constexpr int initialHeight = 620;
/// The window begins within a screen of 1024 x 768, with room for its frame and a desktop's panel.
constexpr QSize largestInitialSize{1010, 680};
/// What a desktop's frame takes as a rule.
constexpr QSize frameRoom{14, 40};

} // namespace

QSize firstSize(const QSize& wanted, const QSize& available)
{
    return wanted.boundedTo(largestInitialSize).boundedTo(available - frameRoom);
}

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent)
{
    installAccessibility();
    setupUi(this);
    setWindowIcon(imageNamed(QStringLiteral("spotwell")));
    statusLine->setFont(consoleFont());

    // Both words fit, so that nothing moves when the one takes the other's place.
    describeConnection(true);
    const int width = connected->sizeHint().width();
    describeConnection(false);
    connected->setMinimumWidth(std::max(width, connected->sizeHint().width()));
    connect(connected, &QAbstractButton::toggled, this, [this](bool isConnected) {
        describeConnection(isConnected);
        announceConnection(isConnected);
    });

    // The quit command is no slip, unlike a closed window: it is not asked about.
    connect(new QShortcut(QKeySequence::Quit, this), &QShortcut::activated, qApp, &QCoreApplication::quit);

    // The toolkit takes the menu key alone.
    connect(new QShortcut(QKeySequence(Qt::SHIFT | Qt::Key_F10), this), &QShortcut::activated, this,
            &MainWindow::showContextMenu);

    describeBulb(tr("Not yet known whether Logwright runs"));
    resize(initialSize());
}

void MainWindow::setAppearance(const Appearance& appearance)
{
    QApplication::setPalette(appearance.palette);
    QToolTip::setPalette(appearance.palette);
    // Some desktops give single classes of widgets colours of their own; the window's own palette beats
    // those.
    setPalette(appearance.palette);
}

void MainWindow::setLogwrightRunning(bool running)
{
    const QString words = running ? tr("Logwright is running") : tr("Logwright is not running");
    const bool isNews = lgwtRunningButton->accessibleDescription() != words;
    describeBulb(words);
    if (isNews)
        logwrightNews_.announce(words);
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (shouldClose && !shouldClose())
        event->ignore();
    else
        event->accept();
}

void MainWindow::describeConnection(bool isConnected)
{
    connected->setText(isConnected ? tr("Co&nnected") : tr("Co&nnect"));
    // Switched on it may still be opening, or opened again and again.
    connected->setToolTip(isConnected ? tr("The connection to the DX cluster node is on; press to end it")
                                      : tr("The connection to the DX cluster node is off; press to open it"));
}

void MainWindow::announceConnection(bool isConnected)
{
    // Of what has the focus a screen reader tells each change by itself.
    if (!connected->hasFocus())
        connectionNews_.announce(isConnected ? tr("The DX cluster connection is on")
                                             : tr("The DX cluster connection is off"));
}

void MainWindow::describeBulb(const QString& words)
{
    lgwtRunningButton->setToolTip(words);
    // Told to screen readers as a change even when it is none.
    if (lgwtRunningButton->accessibleDescription() != words)
        lgwtRunningButton->setAccessibleDescription(words);
}

void MainWindow::showContextMenu() const
{
    QWidget* const control = focusWidget();
    if (!control)
        return;
    const QPoint place = control->inputMethodQuery(Qt::ImCursorRectangle).toRect().center();
    QContextMenuEvent event(QContextMenuEvent::Keyboard, place, control->mapToGlobal(place));
    QCoreApplication::sendEvent(control, &event);
}

QSize MainWindow::initialSize() const
{
    const qreal line = consoleColumns * QFontMetricsF(statusLine->font()).horizontalAdvance(u'0');
    const qreal consoleWidth = line + 2 * statusLine->document()->documentMargin() +
                               statusLine->verticalScrollBar()->sizeHint().width() +
                               2 * statusLine->frameWidth();
    const QMargins margins = centralWidget()->layout()->contentsMargins();
    // One more pixel for the caret behind the last character.
    const int width = static_cast<int>(std::ceil(consoleWidth)) + margins.left() + margins.right() + 1;
    return firstSize({std::max(width, minimumSizeHint().width()), initialHeight}, screen()->availableSize());
}

} // namespace spotwell
