#pragma once

namespace spotwell
{

/// While it lives, the calling thread is given no further thread.
class ThreadShortage
{
public:
    ThreadShortage();
    ~ThreadShortage();
    ThreadShortage(const ThreadShortage&) = delete;
    ThreadShortage& operator=(const ThreadShortage&) = delete;
};

} // namespace spotwell
