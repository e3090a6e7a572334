// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/MainWindow.h"

#include "app/Images.h"
#include "util/ConsoleView.h"

#include <QApplication>
#include <QCloseEvent>
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

} // namespace

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent)
{
    setupUi(this);
    setWindowIcon(imageNamed(QStringLiteral("spotwell")));
    statusLine->setFont(consoleFont());

    // Both words fit, so that nothing moves when the one takes the other's place.
    describeConnection(true);
    const int width = connected->sizeHint().width();
    describeConnection(false);
    connected->setMinimumWidth(std::max(width, connected->sizeHint().width()));
    connect(connected, &QAbstractButton::toggled, this, &MainWindow::describeConnection);

    // The quit command is no slip, unlike a closed window: it is not asked about.
    connect(new QShortcut(QKeySequence::Quit, this), &QShortcut::activated, qApp, &QCoreApplication::quit);

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
    describeBulb(running ? tr("Logwright is running") : tr("Logwright is not running"));
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
    connected->setToolTip(isConnected ? tr("Connected to the DX cluster node; press to disconnect")
                                      : tr("Not connected; press to connect to the DX cluster node"));
}

void MainWindow::describeBulb(const QString& words)
{
    lgwtRunningButton->setToolTip(words);
    lgwtRunningButton->setAccessibleDescription(words);
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
    return QSize(std::max(width, minimumSizeHint().width()), initialHeight)
        .boundedTo(largestInitialSize)
        .boundedTo(screen()->availableSize());
}

} // namespace spotwell
