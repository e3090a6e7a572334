// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/ProcessEnd.h"

#include <QCoreApplication>
#include <QSemaphore>
#include <QString>
#include <QThread>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <utility>

namespace spotwell
{

namespace
{

// An exit handler reaches nothing but the process itself.
ProcessEnd* current = nullptr;
// Where Qt's messages went before.
QtMessageHandler messages = nullptr;

/// How long the main thread may take for the ending when Qt exits on another.
constexpr std::chrono::milliseconds longestEnding{500};

/// The last that Qt says before it exits on whatever thread it is, without exit handlers. Nothing else tells
/// of it.
bool isCompositorGone(const QString& message)
{
    return message.startsWith(QLatin1String("The Wayland connection "));
}

} // namespace

ProcessEnd::ProcessEnd(std::function<void()> ending) : ending_(std::move(ending))
{
    QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, &ProcessEnd::runOnce);
    current = this;
    (void)std::atexit(&ProcessEnd::runOnce);
    messages = qInstallMessageHandler(&ProcessEnd::takeMessage);
}

ProcessEnd::~ProcessEnd()
{
    qInstallMessageHandler(messages);
    current = nullptr;
}

void ProcessEnd::takeMessage(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    messages(type, context, message);
    if (isCompositorGone(message))
        runOnMainThread();
}

void ProcessEnd::runOnMainThread()
{
    QCoreApplication* const application = QCoreApplication::instance();
    if (application->thread() == QThread::currentThread()) {
        runOnce();
        return;
    }
    const auto done = std::make_shared<QSemaphore>();
    QMetaObject::invokeMethod(application, [done] {
        runOnce();
        done->release();
    });
    (void)done->tryAcquire(1, static_cast<int>(longestEnding.count()));
}

void ProcessEnd::runOnce()
{
    if (ProcessEnd* const end = std::exchange(current, nullptr))
        end->ending_();
}

} // namespace spotwell
