// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/Floor.h"
#include "bench/NodeLines.h"
#include "bench/StandIns.h"
#include "util/ConsoleText.h"
#include "util/ConsoleView.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPlainTextEdit>
#include <QWindow>
#include <benchmark/benchmark.h>

namespace spotwell::bench
{

namespace
{

/// Gives the console entries of a busy node, over and over.
class Entries
{
public:
    Entries()
    {
        for (QString& line : lines_)
            line.prepend(QStringLiteral("teln "));
    }
    const QString& next()
    {
        position_ = (position_ + 1) % lines_.size();
        return lines_[position_];
    }
    [[nodiscard]] std::size_t averageSize() const
    {
        return sizeOf(lines_) / static_cast<std::size_t>(lines_.size());
    }

private:
    QStringList lines_ = nodeLines(NodeText::spots);
    qsizetype position_ = 0;
};

// More than the console holds, so that every further line pushes one out.
constexpr int fillingLines = 400;

void consoleText(benchmark::State& state)
{
    Entries entries;
    ConsoleText text;
    for (int i = 0; i < fillingLines; ++i)
        text.append(entries.next());
    const Stopwatch watch;
    for ([[maybe_unused]] auto iteration : state)
        text.append(entries.next());
    countLines(state, watch.seconds(), 1, entries.averageSize());
}
BENCHMARK(consoleText)->Name("ConsoleText::append");

class PaintCounter final : public QObject
{
public:
    int paints = 0;

    bool eventFilter(QObject*, QEvent* event) override
    {
        paints += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
};

/// A window of the program's size with the console alone. The argument is how many entries come in one frame.
void consoleView(benchmark::State& state)
{
    const auto perFrame = state.range(0);
    Entries entries;
    NoMainQueue mainQueue;
    QPlainTextEdit widget;
    ConsoleView view(widget, mainQueue);
    widget.resize(1000, 560);
    widget.show();
    for (int i = 0; i < fillingLines; ++i)
        view.appendText(entries.next());
    view.flush();
    while (!widget.windowHandle()->isExposed())
        QCoreApplication::processEvents();
    QCoreApplication::processEvents();

    PaintCounter counter;
    widget.viewport()->installEventFilter(&counter);
    const Stopwatch watch;
    for ([[maybe_unused]] auto iteration : state) {
        for (auto left = perFrame; left > 0; --left)
            view.appendText(entries.next());
        view.flush();
        QCoreApplication::processEvents();
    }
    if (counter.paints < state.iterations())
        state.SkipWithError("not every frame was painted");
    countLines(state, watch.seconds(), static_cast<std::size_t>(perFrame),
               static_cast<std::size_t>(perFrame) * entries.averageSize());
}
BENCHMARK(consoleView)
    ->Name("ConsoleView, lines a frame")
    ->Arg(1)
    ->Arg(12)
    ->Arg(50)
    ->Arg(200)
    ->Unit(benchmark::kMicrosecond);

} // namespace

} // namespace spotwell::bench
