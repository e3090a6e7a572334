// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/ProcessEnd.h"

#include <QCoreApplication>
#include <QString>
#include <QThread>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <utility>

namespace spotwell
{

namespace
{

// An exit handler reaches nothing but the process itself, and a message handler neither.
std::atomic<ProcessEnd*> current = nullptr;

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
    messages_ = qInstallMessageHandler(nullptr);
    current = this;
    (void)std::atexit(&ProcessEnd::runOnce);
    qInstallMessageHandler(&ProcessEnd::takeMessage);
}

ProcessEnd::~ProcessEnd()
{
    qInstallMessageHandler(messages_);
    current = nullptr;
}

void ProcessEnd::takeMessage(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    ProcessEnd* const end = current;
    if (!end)
        return;
    end->messages_(type, context, message);
    if (isCompositorGone(message))
        end->runOnMainThread();
}

void ProcessEnd::runOnMainThread()
{
    QCoreApplication* const application = QCoreApplication::instance();
    if (application->thread() == QThread::currentThread()) {
        runOnce();
        return;
    }
    QMetaObject::invokeMethod(application, &ProcessEnd::runOnce);
    // The main thread may hear of it meanwhile, too, and then waits for this one.
    if (ended_.tryAcquire(1, static_cast<int>(longestEnding.count())))
        ended_.release();
}

void ProcessEnd::runOnce()
{
    ProcessEnd* const end = current;
    if (!end || std::exchange(end->hasBegun_, true))
        return;
    end->ending_();
    end->ended_.release();
}

} // namespace spotwell
