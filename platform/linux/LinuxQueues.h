#pragma once

#include "platform/Queues.h"

#include <QObject>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace spotwell
{

/// The main queue on Qt's event loop. To be made on the main thread.
///
/// However many tasks wait, one event stands for them all in Qt's queue.
class QtMainQueue final : public QObject, public MainQueue
{
public:
    QtMainQueue() = default;

    void async(Task task) override;
    void after(Seconds delay, Task task) override;
    void every(Seconds interval, Task task) override;
    [[nodiscard]] bool isMainThread() const override;

    bool event(QEvent* event) override;

private:
    std::mutex mutex_;
    std::deque<Task> tasks_;
    bool posted_ = false;
};

/// A serial queue on a thread of its own, which begins with the first task.
class ThreadSerialQueue final : public SerialQueue
{
public:
    explicit ThreadSerialQueue(QString label);
    ~ThreadSerialQueue() override;
    ThreadSerialQueue(const ThreadSerialQueue&) = delete;
    ThreadSerialQueue& operator=(const ThreadSerialQueue&) = delete;

    void async(Task task) override;
    bool pause(Seconds duration) override;
    [[nodiscard]] QString label() const override { return label_; }
    /// Drops what waits, ends a pause and waits for the running task; what is added later is dropped, too.
    void end();

private:
    void beginThread();
    void run();

    const QString label_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Task> tasks_;
    bool ending_ = false;
    std::thread thread_;
};

} // namespace spotwell
