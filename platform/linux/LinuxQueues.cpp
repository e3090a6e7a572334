#include "platform/linux/LinuxQueues.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <pthread.h>
#include <system_error>
#include <utility>

namespace spotwell
{

namespace
{

std::chrono::milliseconds wholeMilliseconds(Seconds span)
{
    return std::chrono::ceil<std::chrono::milliseconds>(span);
}

// The kernel keeps 15 characters of a thread's name; a label's end tells the queues apart.
QByteArray threadName(const QString& label)
{
    return label.right(15).toLatin1();
}

} // namespace

void QtMainQueue::async(Task task)
{
    const std::lock_guard guard(mutex_);
    tasks_.push_back(std::move(task));
    if (!std::exchange(posted_, true))
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
}

void QtMainQueue::after(Seconds delay, Task task)
{
    if (!isMainThread()) {
        // The delay counts from this call, however long the main thread takes to hear of it.
        const auto due = std::chrono::steady_clock::now() + delay;
        async([this, due, task = std::move(task)]() mutable {
            after(std::max(Seconds{0}, Seconds(due - std::chrono::steady_clock::now())), std::move(task));
        });
        return;
    }
    QTimer::singleShot(wholeMilliseconds(delay), Qt::PreciseTimer, this, std::move(task));
}

void QtMainQueue::every(Seconds interval, Task task)
{
    auto* timer = new QTimer(this);
    QObject::connect(timer, &QTimer::timeout, this, std::move(task));
    // Timers of one interval started together fire together, so precision costs no wake-up.
    timer->setTimerType(Qt::PreciseTimer);
    timer->start(wholeMilliseconds(interval));
}

bool QtMainQueue::isMainThread() const
{
    return QThread::currentThread() == thread();
}

bool QtMainQueue::event(QEvent* event)
{
    // Events are posted under the lock, too, so that it hands over the event itself.
    std::unique_lock guard(mutex_);
    if (event->type() != QEvent::User) {
        guard.unlock();
        return QObject::event(event);
    }
    // Only what waits now, so that other events get their turn; one by one, so that the order also holds
    // where a task runs an event loop of its own.
    posted_ = false;
    for (std::size_t left = tasks_.size(); left > 0 && !tasks_.empty(); --left) {
        Task task = std::move(tasks_.front());
        tasks_.pop_front();
        guard.unlock();
        task();
        task = nullptr;
        guard.lock();
    }
    return true;
}

ThreadSerialQueue::ThreadSerialQueue(QString label) : label_(std::move(label)) {}

ThreadSerialQueue::~ThreadSerialQueue()
{
    end();
}

void ThreadSerialQueue::end()
{
    std::deque<Task> dropped;
    {
        const std::lock_guard guard(mutex_);
        ending_ = true;
        dropped.swap(tasks_);
    }
    changed_.notify_all();
    if (thread_.joinable())
        thread_.join();
}

void ThreadSerialQueue::async(Task task)
{
    {
        const std::lock_guard guard(mutex_);
        if (ending_)
            return;
        tasks_.push_back(std::move(task));
        beginThread();
    }
    changed_.notify_all();
}

void ThreadSerialQueue::beginThread()
{
    if (thread_.joinable())
        return;
    try {
        thread_ = std::thread([this] { run(); });
    } catch (const std::system_error&) {
        // Out of threads for now: the task waits, and the next one tries again.
        return;
    }
}

bool ThreadSerialQueue::pause(Seconds duration)
{
    const auto until =
        std::chrono::steady_clock::now() + std::chrono::ceil<std::chrono::steady_clock::duration>(duration);
    std::unique_lock guard(mutex_);
    return !changed_.wait_until(guard, until, [this] { return ending_; });
}

void ThreadSerialQueue::run()
{
    ::pthread_setname_np(::pthread_self(), threadName(label_).constData());
    std::unique_lock guard(mutex_);
    while (true) {
        changed_.wait(guard, [this] { return ending_ || !tasks_.empty(); });
        if (ending_)
            return;
        Task task = std::move(tasks_.front());
        tasks_.pop_front();
        guard.unlock();
        task();
        task = nullptr;
        guard.lock();
    }
}

} // namespace spotwell
