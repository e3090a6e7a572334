// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/SteppedClock.h"

#include "tests/support/WaitUntil.h"

#include <QFile>

#include <fcntl.h>
#include <new>
#include <stdexcept>
#include <sys/mman.h>
#include <unistd.h>

namespace spotwell
{

SteppedClock::SteppedClock(const QString& path) : path_(path)
{
    const int file = ::open(QFile::encodeName(path_).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    void* shared = MAP_FAILED;
    if (file >= 0 && ::ftruncate(file, sizeof(SteppedClockPage)) == 0)
        shared = ::mmap(nullptr, sizeof(SteppedClockPage), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (file >= 0)
        ::close(file);
    if (shared == MAP_FAILED)
        throw std::runtime_error("no clock");
    page_ = new (shared) SteppedClockPage{};
    step(std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now()).time_since_epoch());
}

SteppedClock::~SteppedClock()
{
    ::munmap(page_, sizeof(SteppedClockPage));
}

QStringList SteppedClock::variables(const QStringList& libraries) const
{
    const QStringList all = libraries + QStringList(QStringLiteral(STEPPED_CLOCK));
    return {QStringLiteral("LD_PRELOAD=") + all.join(QLatin1Char(':')),
            QStringLiteral("STEPPED_CLOCK=") + path_,
            QStringLiteral("ASAN_OPTIONS=verify_asan_link_order=0")};
}

SteppedClock::Time SteppedClock::now() const
{
    return Time(std::chrono::nanoseconds(page_->nanoseconds));
}

void SteppedClock::step(std::chrono::nanoseconds by)
{
    page_->nanoseconds += by.count();
}

void SteppedClock::stopAtWait()
{
    page_->stopsAtWait = true;
}

bool SteppedClock::ticks(std::uint64_t seconds) const
{
    const std::uint64_t wanted = page_->returns + seconds;
    return waitUntil([&] { return page_->returns >= wanted; }, std::chrono::seconds{60});
}

} // namespace spotwell
