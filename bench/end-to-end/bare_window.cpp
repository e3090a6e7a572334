// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// The floor of showing lines: a window with one text widget that inserts, trims and paints each line by
// itself and does nothing else. Prints the CPU seconds a line took, and stays until it is told to end.
//   spotwell-bench-bare-window LINES_PER_SECOND SECONDS
// Without arguments it is the floor of a window at all: empty, with one text widget.

#include <QApplication>
#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>

#include <cstdio>
#include <ctime>

namespace
{

constexpr int mostLines = 240; // as many as 19,456 characters are

double cpuSeconds()
{
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

int showEmptyWindow()
{
    QWidget window;
    window.setWindowTitle(QStringLiteral("bare window"));
    auto* const layout = new QVBoxLayout(&window);
    layout->addWidget(new QPlainTextEdit);
    window.resize(962, 620); // as large as spotwell's
    window.show();
    return QApplication::exec();
}

} // namespace

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    if (argc == 1)
        return showEmptyWindow();
    if (argc != 3)
        return 2;
    const int rate = std::max(1, std::atoi(argv[1]));
    const int lines = rate * std::atoi(argv[2]);

    QPlainTextEdit console;
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSizeF(13.0);
    console.setFont(font);
    console.setReadOnly(true);
    console.setUndoRedoEnabled(false);
    console.setLineWrapMode(QPlainTextEdit::NoWrap);
    console.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    console.setMaximumBlockCount(mostLines);
    console.resize(1000, 560);
    for (int i = 0; i < mostLines; ++i)
        console.appendPlainText(QStringLiteral("teln"));
    console.show();

    int shown = 0;
    double before = 0;
    QTimer timer;
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        if (shown == 0)
            before = cpuSeconds();
        console.appendPlainText(
            QStringLiteral("teln DX de W3XYZ:     %1.0  JA1XYZ       #%2 CW 24 dB 21 WPM CQ  1428Z")
                .arg(14000 + shown % 100)
                .arg(shown, 7, 10, QLatin1Char('0')));
        console.verticalScrollBar()->setValue(console.verticalScrollBar()->maximum());
        console.viewport()->repaint();
        if (++shown < lines)
            return;
        timer.stop();
        std::printf("%.9f\n", (cpuSeconds() - before) / lines);
        std::fflush(stdout);
    });
    QTimer::singleShot(1000, &timer, [&] { timer.start(1000 / rate); });
    return QApplication::exec();
}
