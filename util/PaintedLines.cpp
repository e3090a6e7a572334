// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "util/PaintedLines.h"

#include <QAbstractTextDocumentLayout>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextLayout>

#include <algorithm>

namespace spotwell
{

PaintedLines::PaintedLines(QPlainTextEdit& widget)
    : widget_(widget),
      quiet_(widget.document()->documentLayout()),
      movement_(QObject::connect(&widget, &QPlainTextEdit::updateRequest, &widget,
                                 [this](const QRect&, int distance) { moved_ += distance; })),
      top_(topLine()),
      last_(widget.document()->blockCount() - 1),
      place_(lineInView(last_)),
      caretAtEnd_(widget.hasFocus() && widget.textCursor().atEnd())
{
}

PaintedLines::~PaintedLines()
{
    QObject::disconnect(movement_);
}

void PaintedLines::documentChanged(int added)
{
    quiet_.unblock();
    const QTextDocument& document = *widget_.document();
    const int last = document.blockCount() - 1 - added;
    top_ += last - last_;
    last_ = last;
    // A line's glyphs are found once, to lay it out and to paint it.
    for (QTextBlock block = document.findBlockByNumber(last); block.isValid(); block = block.next())
        block.layout()->setCacheEnabled(true);
    QAbstractTextDocumentLayout& layout = *document.documentLayout();
    Q_EMIT layout.documentSizeChanged(layout.documentSize());
}

void PaintedLines::follow()
{
    QWidget& viewport = *widget_.viewport();
    const std::optional<Line> place = lineInView(last_);
    // The margin above the document's first line may stand where a line that was cut has been.
    if (!place_ || !place || topLine() == 0) {
        viewport.update();
    } else {
        viewport.scroll(0, place->top - place_->top - moved_);
        const int top = caretAtEnd_ ? place->top : place->top + place->height;
        viewport.update(0, top, viewport.width(), viewport.height() - top);
    }
    // Lines that went out of view need no glyphs any more.
    QTextBlock gone = widget_.document()->findBlockByNumber(std::max(0, top_));
    for (; gone.isValid() && gone.blockNumber() < topLine(); gone = gone.next())
        gone.clearLayout();
}

int PaintedLines::topLine() const
{
    return widget_.verticalScrollBar()->value();
}

std::optional<PaintedLines::Line> PaintedLines::lineInView(int number) const
{
    const QTextDocument& document = *widget_.document();
    const int bottom = widget_.viewport()->height();
    // Above the document's first line there is a margin.
    Line line{topLine() == 0 ? qRound(document.documentMargin()) : 0, 0};
    for (QTextBlock block = document.findBlockByNumber(topLine()); block.isValid() && line.top < bottom;
         block = block.next()) {
        line.height = qRound(document.documentLayout()->blockBoundingRect(block).height());
        if (block.blockNumber() == number)
            return line;
        line.top += line.height;
    }
    return std::nullopt;
}

} // namespace spotwell
