// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/compare/Hands.h"

#include <QProcess>
#include <QRegularExpression>
#include <QThread>

#include <algorithm>
#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

namespace spotwell::bench
{

namespace
{

QStringList words(const char* text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '));
}

/// Looks until `condition` holds; says `otherwise` when it does not in time.
void waitUntil(const std::string& otherwise, const std::function<bool()>& condition)
{
    constexpr auto patience = std::chrono::seconds{120};
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            throw std::runtime_error(otherwise);
        QThread::msleep(50);
    }
}

} // namespace

Hands::Hands(QProcessEnvironment environment) : environment_(std::move(environment)) {}

QString Hands::xdotool(const QStringList& arguments) const
{
    QProcess process;
    process.setProcessEnvironment(environment_);
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(QStringLiteral("xdotool"), arguments);
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput());
}

QStringList Hands::windows(const QString& pattern) const
{
    // The search itself goes by WM_NAME, which KLog leaves empty in some languages.
    const QStringList all =
        xdotool(words("search --onlyvisible --name .*")).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QStringList questions;
    for (const QString& window : all)
        questions << QStringLiteral("getwindowname") << window;
    const QStringList titles = xdotool(questions).split(QLatin1Char('\n'));
    const QRegularExpression wanted(pattern);
    QStringList found;
    for (qsizetype i = 0; i < std::min(all.size(), titles.size()); ++i) {
        if (wanted.match(titles[i]).hasMatch())
            found += all[i];
    }
    return found;
}

QString Hands::anotherWindow(const QString& pattern, const QString& known) const
{
    QStringList found;
    waitUntil("no window \"" + pattern.toStdString() + '"', [&] {
        found = windows(pattern);
        found.removeAll(known);
        return !found.isEmpty();
    });
    return found.first();
}

void Hands::waitUntilGone(const QString& pattern) const
{
    waitUntil("the window stays: \"" + pattern.toStdString() + '"', [&] { return !sees(pattern); });
}

void Hands::press(const QString& window, const QStringList& keys) const
{
    (void)xdotool(words("windowfocus --sync") << window << words("key") << keys);
}

void Hands::enter(const QString& window, const QString& text) const
{
    (void)xdotool(words("windowfocus --sync") << window << words("type") << text);
    (void)xdotool(words("key Return"));
}

void Hands::click(int x, int y) const
{
    (void)xdotool(words("mousemove") << QString::number(x) << QString::number(y) << words("click 1"));
}

void Hands::place(const QString& window, int width, int height) const
{
    (void)xdotool(words("windowsize") << window << QString::number(width) << QString::number(height)
                                      << words("windowmove") << window << words("0 0"));
}

void Hands::letGo() const
{
    const QString root = xdotool(words("search --maxdepth 0 .*"));
    (void)xdotool(words("mousemove 1279 1023 windowfocus") << root.trimmed());
}

} // namespace spotwell::bench
