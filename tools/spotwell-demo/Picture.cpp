// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-demo/Picture.h"

#include <QPixmap>
#include <QTextCursor>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <utility>

namespace spotwell
{

Picture::Picture(const QPlainTextEdit& console, QStringList sources, QString file)
    : console_(console), sources_(std::move(sources)), file_(std::move(file))
{
    timer_.callOnTimeout([this] {
        if (showsAll())
            takeAtLatestNow();
    });
}

void Picture::startWatching()
{
    if (!file_.isEmpty())
        timer_.start(std::chrono::milliseconds{50});
}

void Picture::takeAtLatestNow()
{
    timer_.stop();
    if (std::exchange(taken_, true) || file_.isEmpty())
        return;
    if (!console_.window()->grab().save(file_))
        std::printf("could not write %s\n", qPrintable(file_));
}

bool Picture::showsAll() const
{
    const QRect visible = console_.viewport()->rect();
    QTextCursor cursor = console_.cursorForPosition(visible.topLeft());
    cursor.movePosition(QTextCursor::StartOfBlock);
    cursor.setPosition(console_.cursorForPosition(visible.bottomRight()).position(), QTextCursor::KeepAnchor);
    return holdsEach(cursor.selectedText(), sources_);
}

bool holdsEach(const QString& lines, const QStringList& sources)
{
    const QStringList each = lines.split(QChar::ParagraphSeparator);
    return std::all_of(sources.begin(), sources.end(), [&](const QString& source) {
        return std::any_of(each.begin(), each.end(),
                           [&](const QString& line) { return line.startsWith(source + u' '); });
    });
}

} // namespace spotwell
